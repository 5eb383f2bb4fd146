#!/bin/sh
# What an unpacked package contains beside the headers is what is listed and the documents, no less
# and no more; whatever a header includes of ours is there; and the links between the documents lead
# somewhere.
#
#     check-contents.sh PREFIX LIST SOURCES DOCUMENTS
#
# LIST has components and paths below PREFIX, one of each a line; the component python is not in the
# package. SOURCES is the project's tree, DOCUMENTS the folder below PREFIX that documents are
# installed in.
set -eu

prefix=$1
list=$2
sources=$3
documents=$4
failed=0

complain() {
    echo "check-contents: $*"
    failed=1
}

cd "$prefix"

find . ! -type d ! -path './include/kestra/*/*.h' | sed 's,^\./,,' | LC_ALL=C sort >"$list.found"
{
    sed -n '/^python /d; s/^[a-z]* //p' "$list"
    (cd "$sources" && find CHANGELOG.md CONTRIBUTING.md LICENSE README.md SECURITY.md docs \
        examples/c examples/crawl examples/links examples/pages examples/rewrite -type f ! -path '*/__pycache__/*' |
        sed "s,^,$documents/,")
} | LC_ALL=C sort | diff - "$list.found" ||
    complain "the package lacks, or has more than, what is listed (<: missing, >: unexpected)"

headers=$(find include/kestra -name '*.h')
[ "$(echo "$headers" | wc -l)" -gt 40 ] || complain "only these headers were found:" $headers
for header in $headers; do
    for included in $(sed -n 's/^#include "\(.*\)"/\1/p' "$header"); do
        [ -f "$(dirname "$header")/$included" ] || complain "$header includes $included, which is missing"
    done
done

pages=$(find "$documents" -name '*.md')
links=0
for page in $pages; do
    # Not in blocks of code, where "](" may begin a lambda.
    for target in $(sed '/^```/,/^```/d' "$page" | grep -o '](\([^)]*\))' |
        sed 's/^](//; s/)$//; s/#.*//' | grep -v '^[a-z]*:' | sort -u); do
        links=$((links + 1))
        [ -e "$(dirname "$page")/$target" ] || complain "$page links to $target, which is missing"
    done
done
[ "$links" -ge 10 ] || complain "only $links links were found in" $pages

exit $failed
