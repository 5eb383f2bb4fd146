#!/bin/sh
# What an installed shared library exports is what its headers mark with KESTRA_HTML_API, no less
# and no more.
#
#     check-exports.sh LIBRARY-FOLDER HEADER-FOLDER USER-SOURCES VERSION
set -eu
. "$(dirname "$0")/exports.sh"

libraries=$1
headers=$2
user=$3
version=$4
: "${NM:=nm}" "${READELF:=readelf}"
minor=${version%.*}
library=$libraries/libkestra-html.so.$version

# The file, its version and the two links to it.
[ -f "$library" ] || { complain "$library is missing"; exit 1; }
soname=$("$READELF" -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[ "$soname" = "libkestra-html.so.$minor" ] || complain "the SONAME is \"$soname\""
for link in libkestra-html.so libkestra-html.so.$minor; do
    [ "$(readlink -f "$libraries/$link")" = "$(readlink -f "$library")" ] || complain "$link does not lead to $library"
done

symbols=$("$NM" -DC --defined-only "$library" | sed 's/^[0-9a-f]* //')
check_exports "$headers" "$user" char16_t <<SYMBOLS
$symbols
SYMBOLS

exit $failed
