#!/bin/sh
# Builds a program of one source against an installed package that pkg-config finds. A DLL is put
# beside it.
#
#     build-with-pkg-config.sh PREFIX LIBRARY-FOLDER SOURCE PROGRAM
#
# CXX is the compiler, CXXFLAGS are its options.
set -eu

prefix=$1
libraries=$2
source=$3
program=$4
folder=$(dirname "$program")

PKG_CONFIG_LIBDIR=$libraries/pkgconfig
export PKG_CONFIG_LIBDIR
flags=$(pkg-config --cflags --libs kestra-html)
rm -rf "$folder"
mkdir -p "$folder"
$CXX -std=c++20 $CXXFLAGS -o "$program" "$source" $flags
if [ -f "$prefix/bin/kestra-html.dll" ]; then
    cp "$prefix/bin/kestra-html.dll" "$folder/"
fi
