#!/bin/sh
# Compiles every installed header in a project whose own folders have files of the same names: none
# of those may come between.
#
#     check-clashes.sh INCLUDE-FOLDER FOLDER
#
# CXX is the compiler, CXXFLAGS are its options. FOLDER is made anew, as that project.
set -eu

include=$1
folder=$2

rm -rf "$folder"
mkdir -p "$folder"
headers=$(cd "$include" && find kestra -name '*.h' | sort)
[ -n "$headers" ] || { echo "no headers in $include" >&2; exit 1; }

for header in $headers; do
    name=${header#kestra/}
    mkdir -p "$folder/$(dirname "$name")"
    echo "#error \"a header of the library included $name of another project\"" >"$folder/$name"
done
echo '#define OWN_EXPORT 1' >"$folder/platform/Export.h"

{
    echo '#include "platform/Export.h"'
    for header in $headers; do
        echo "#include <$header>"
    done
    echo '#ifndef OWN_EXPORT'
    echo '#error "a header of the library came before one of the project"'
    echo '#endif'
    echo 'int main() { Kestra::HTML::GenericParser parser; return parser.GetLine() == 1 ? 0 : 1; }'
} >"$folder/Main.cpp"

$CXX -std=c++20 $CXXFLAGS -fsyntax-only -I"$folder" -I"$include" "$folder/Main.cpp"
