#!/bin/sh
# What an installed DLL exports is what its headers mark with KESTRA_HTML_API, no less and no more,
# and its import library offers the same.
#
#     check-exports-windows.sh PREFIX USER-SOURCES
set -eu
. "$(dirname "$0")/exports.sh"

prefix=$1
user=$2
: "${NM:=x86_64-w64-mingw32-nm}" "${OBJDUMP:=x86_64-w64-mingw32-objdump}" "${CXXFILT:=x86_64-w64-mingw32-c++filt}"
library=$prefix/bin/kestra-html.dll
imports=$prefix/lib/libkestra-html.dll.a

for file in "$library" "$imports"; do
    [ -f "$file" ] || { complain "$file is missing"; exit 1; }
done

# The table of names; an export by number alone would be missing in it.
tables=$("$OBJDUMP" -p "$library")
names=$(echo "$tables" | awk '/^\[Ordinal\/Name Pointer\] Table/ { inside = 1; next }
    inside && NF == 0 { exit }
    inside { print $NF }')
count=$(echo "$tables" | sed -n 's/^\tExport Address Table[ \t]*\([0-9a-f]*\)$/\1/p' | head -n 1)
[ "$((0x$count))" -eq "$(echo "$names" | wc -l)" ] ||
    complain "$((0x$count)) exports have $(echo "$names" | wc -l) names"

symbols=$(echo "$names" | "$CXXFILT" | sed 's/^/T /')
check_exports "$prefix/include/kestra" "$user" wchar_t <<SYMBOLS
$symbols
SYMBOLS

offered=$("$NM" "$imports" 2>/dev/null | awk '$2 == "I" && $3 ~ /^__imp_/ { print substr($3, 7) }' | LC_ALL=C sort)
[ "$offered" = "$(echo "$names" | LC_ALL=C sort)" ] || complain "$imports offers other names than the DLL exports"

exit $failed
