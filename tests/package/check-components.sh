#!/bin/sh
# Each component of a build can be installed alone, and brings the files that are listed for it; all
# together they bring what the package has. The component python, where the module is built, is in
# no package: it comes only when it is asked for.
#
#     check-components.sh BUILD FOLDER LIST PREFIX DOCUMENTS
#
# LIST has components and paths, one of each a line: headers other than that of the C interface, and
# what is in the folder DOCUMENTS, are in the components development and doc. CMAKE is the program.
set -eu

build=$1
folder=$2
list=$3
prefix=$4
documents=$5
: "${CMAKE:=cmake}"
failed=0

complain() {
    echo "check-components: $*"
    failed=1
}

files() {
    (cd "$1" 2>/dev/null && find . ! -type d | sed 's,^\./,,' | LC_ALL=C sort)
}

components="runtime development tool doc"
rm -rf "$folder"
mkdir -p "$folder"
for component in $components $(sed -n 's/^\(python\) .*/\1/p' "$list" | uniq); do
    "$CMAKE" --install "$build" --component $component --prefix "$folder/$component" >/dev/null
    mkdir -p "$folder/$component"
    {
        sed -n "s/^$component //p" "$list"
        [ $component != development ] || files "$prefix" | grep '^include/kestra/.*/.*\.h$'
        [ $component != doc ] || files "$prefix" | grep "^$documents/" | grep -v "^$documents/licenses/"
    } | LC_ALL=C sort >"$folder/$component.listed"
    files "$folder/$component" | diff "$folder/$component.listed" - || complain "$component (<: missing, >: unexpected)"
done
for component in development doc; do
    [ -s "$folder/$component.listed" ] || complain "$component is empty"
done

for component in $components; do
    cat "$folder/$component.listed"
done | LC_ALL=C sort >"$folder/together"
files "$prefix" | diff "$folder/together" - ||
    complain "the components are not the package (<: twice or not packed, >: in no component)"

exit $failed
