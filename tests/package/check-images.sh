#!/bin/sh
# What an image for Windows needs and allows: no library but those of the system and the DLL beside
# it, an address chosen by the loader from all 64 bits, no execution of data. The DLL and the tool
# carry the version of the project.
#
#     check-images.sh VERSION IMAGE...
set -eu

version=$1
shift
: "${OBJDUMP:=x86_64-w64-mingw32-objdump}" "${WINDRES:=x86_64-w64-mingw32-windres}"
failed=0

complain() {
    echo "check-images: $image: $*"
    failed=1
}

# What every Windows has. The runtime of the compiler is none of them: libgcc, libstdc++ and
# libwinpthread are linked in.
system=' advapi32.dll kernel32.dll msvcrt.dll ole32.dll shell32.dll user32.dll '

check_headers() {
    for line in 'file format pei-x86-64' HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
        echo "$headers" | grep -q "$line\$" || complain "no $line"
    done
    # Without relocations the loader has no choice of the address.
    echo "$headers" | grep 'Base Relocation Directory' | grep -qv ' 00000000 Base' || complain "no relocations"
    ! echo "$headers" | grep -q 'relocations stripped' || complain "relocations are stripped"
}

check_imports() {
    imports=$(echo "$headers" | sed -n 's/^[ \t]*DLL Name: //p' | tr '[:upper:]' '[:lower:]')
    echo "$imports" | grep -qx 'kernel32.dll' || complain "imports nothing from the system: $imports"
    for library in $imports; do
        case $system in
            *" $library "*) continue ;;
        esac
        [ "$library" = "$beside" ] || complain "needs $library"
    done
}

check_version() {
    resource=$("$WINDRES" -J coff -O rc "$image" 2>&1) || complain "no resource: $resource"
    numbers=$(echo "$version" | sed 's/\./, /g'),
    numbers="$numbers 0"
    for line in "FILEVERSION $numbers" "PRODUCTVERSION $numbers" "FILETYPE $type" \
        "VALUE \"FileVersion\", \"$version\"" \
        "VALUE \"ProductVersion\", \"$version\"" "VALUE \"OriginalFilename\", \"$(basename "$image")\""; do
        echo "$resource" | sed 's/^ *//' | grep -qxF "$line" || complain "no $line in its version resource"
    done
}

[ $# -gt 0 ] || { echo "check-images: no images"; exit 1; }
for image in "$@"; do
    headers=$("$OBJDUMP" -p "$image") || { complain "cannot be read"; continue; }
    case $image in
        *.dll)
            type=0x2
            beside=
            name=$(echo "$headers" | sed -n 's/^Name[ \t]*[0-9a-f]* \(.*\)/\1/p')
            [ "$name" = "$(basename "$image")" ] || complain "programs will look for \"$name\""
            ;;
        *)
            type=0x1
            beside=kestra-html.dll
            echo "$headers" | grep -q 'DLL Name: kestra-html.dll' || complain "does not use the DLL"
            ;;
    esac
    check_headers
    check_imports
    case $image in
        */kestra-html.*) check_version ;;
    esac
done

exit $failed
