#!/bin/sh
# Builds a program of one source against an installed package that pkg-config finds. A DLL is put
# beside it.
#
#     build-with-pkg-config.sh PREFIX LIBRARY-FOLDER SOURCE PROGRAM
#
# CXX is the compiler, CXXFLAGS are its options. With PKG_CONFIG_OPTIONS=--static the packages that
# the library needs are those of the system.
set -eu

prefix=$1
libraries=$2
source=$3
program=$4
folder=$(dirname "$program")

if [ "${PKG_CONFIG_OPTIONS-}" = --static ]; then
    PKG_CONFIG_PATH=$libraries/pkgconfig
    export PKG_CONFIG_PATH
else
    PKG_CONFIG_LIBDIR=$libraries/pkgconfig
    export PKG_CONFIG_LIBDIR
fi
flags=$(pkg-config ${PKG_CONFIG_OPTIONS-} --cflags --libs kestra-html)
rm -rf "$folder"
mkdir -p "$folder"
$CXX -std=c++20 $CXXFLAGS -o "$program" "$source" $flags
if [ -f "$prefix/bin/kestra-html.dll" ]; then
    cp "$prefix/bin/kestra-html.dll" "$folder/"
fi
