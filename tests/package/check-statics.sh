#!/bin/sh
# What would start the runtime of threads in a DLL, which gives back nothing when the DLL is freed:
# variables of single threads, and static objects of functions whose constructors run with the first
# call. The DLL has none of ours, and of the first kind none at all.
#
#     check-statics.sh DLL-WITH-SYMBOLS
set -eu

library=$1
: "${NM:=x86_64-w64-mingw32-nm}"
failed=0

symbols=$("$NM" "$library" 2>/dev/null | sed 's/^[0-9a-f ]* //')
found() {
    matches=$(echo "$symbols" | grep -E "$2" || true)
    [ -z "$matches" ] || { echo "check-statics: $1:" "$matches"; failed=1; }
}

count=$(echo "$symbols" | grep -c '6Kestra') || true
[ "$count" -ge 1000 ] || { echo "check-statics: only $count symbols of ours were found in $library"; failed=1; }
# GCC emulates them on Windows; _ZTW and _ZTH reach and make those of other sources.
found "a variable of single threads" '__emutls|_ZT[WH].*6Kestra|__(cxa|tls)_thread_atexit'
found "a static object that is guarded" '_ZGV.*6Kestra'
found "a static object that is made when the DLL is loaded" '_GLOBAL__sub_I_.*6Kestra|^. _sub_I_[0-9]'

exit $failed
