#!/bin/sh
# What an installed shared library exports is what its headers mark with KESTRA_HTML_API, no less and no more.
#
#     check-exports.sh LIBRARY-FOLDER HEADER-FOLDER USER-SOURCES VERSION
set -eu

libraries=$1
headers=$2
user=$3
version=$4
: "${NM:=nm}" "${READELF:=readelf}"
major=${version%%.*}
library=$libraries/libkestra-html.so.$version
failed=0

complain() {
    echo "check-exports: $*"
    failed=1
}

# The file, its version and the two links to it.
[ -f "$library" ] || { complain "$library is missing"; exit 1; }
soname=$("$READELF" -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[ "$soname" = "libkestra-html.so.$major" ] || complain "the SONAME is \"$soname\""
for link in libkestra-html.so libkestra-html.so.$major; do
    [ "$(readlink -f "$libraries/$link")" = "$(readlink -f "$library")" ] || complain "$link does not lead to $library"
done

# Public names, one a line: "template NAME", "class NAME" or "object NAME".
public=$(find "$headers" -name '*.h' -exec awk '
    match($0, /^(class|struct) KESTRA_HTML_API [A-Za-z0-9_]+/) {
        name = substr($0, RSTART, RLENGTH)
        sub(/.* /, "", name)
        print (previous ~ /^ *template </ ? "template " : "class ") name
    }
    match($0, /^extern KESTRA_HTML_API .*[ *&][A-Za-z0-9_]+(\[[0-9]*\])?;/) {
        name = $0
        sub(/(\[[0-9]*\])?;.*/, "", name)
        sub(/.*[ *&]/, "", name)
        print "object " name
    }
    { previous = $0 }' {} +)
[ "$(echo "$public" | wc -l)" -gt 30 ] || complain "only these public names were found in $headers:" $public

# Strong symbols must belong to public names. Weak ones may also be instantiations of standard templates, which share one definition
# with those of the user. Sanitizers add markers whose names no C++ program can have.
"$NM" -DC --defined-only "$library" | awk -v public="$public" '
    BEGIN {
        count = split(public, lines, "\n")
        for (i = 1; i <= count; ++i) {
            split(lines[i], words, " ")
            kind[words[2]] = words[1]
        }
        # Nothing but fields: all that their users need is in the header.
        fieldsOnly["Attribute"] = fieldsOnly["EntityToken"] = 1
    }
    {
        type = $2
        name = $0
        sub(/^[0-9a-f]+ . /, "", name)
        if (name ~ /^__(odr_)?asan/)
            next
        ++symbols
        sub(/^(vtable|VTT|typeinfo|typeinfo name|guard variable|(non-)?virtual thunk|construction vtable|covariant return thunk) (for|to) /, "", name)
    }
    name ~ /^Kestra::(HTML|Base|StringNS|VFS)::/ {
        owner = name
        sub(/^Kestra::[A-Za-z]+::/, "", owner)
        match(owner, /^[A-Za-z0-9_]+/)
        owner = substr(owner, 1, RLENGTH)
        if (!(owner in kind))
            print "exported without being public: " $0
        if (name ~ ("::" owner "<char, std::"))
            ++narrow[owner]
        else if (name ~ ("::" owner "<char16_t, std::"))
            ++wide[owner]
        else
            ++plain[owner]
        next
    }
    type ~ /[WVu]/ && name ~ /^[^(]*(std|__gnu_cxx)::/ { next }
    { print "a stranger is exported: " $0 }
    END {
        for (owner in kind) {
            if (owner in fieldsOnly)
                continue
            if (kind[owner] == "template" ? !narrow[owner] : !plain[owner])
                print "not exported: " owner
            if (kind[owner] == "template" && !wide[owner])
                print "not exported in the wide flavour: " owner
        }
        if (symbols < 100)
            print "only " symbols + 0 " symbols were found"
    }' >exports.txt
[ ! -s exports.txt ] || { cat exports.txt; failed=1; }

# The user program names every public class, so that linking it proves more than a symbol table can.
for name in $(echo "$public" | sed 's/.* //'); do
    grep -qw "$name" "$user"/*.cpp || complain "the user program does not use $name"
done

exit $failed
