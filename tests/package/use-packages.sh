#!/bin/sh
# Runs in a fresh Debian system with the packages in /packages: installs them, compiles and runs the
# examples by pkg-config and CMake, in C, C++ and Python, uses the tool, and removes it all again.
set -eu

cd /packages
examples=/usr/share/doc/kestra-html-doc/examples
failed=0

check() {
    what=$1
    shift
    if "$@" >/tmp/said 2>&1; then
        echo "ok: $what"
    else
        echo "failed: $what"
        tail -n 20 /tmp/said
        failed=1
    fi
}

same_links() {
    "$1" harbour.html | cmp - "$2"
}

apt-get update -q >/dev/null

# The library and the tool bring no compiler and no Python.
check "the tool installs" apt-get install -q -y --no-install-recommends ./libkestra-html[0-9]*.deb ./kestra-html_*.deb
version=$(dpkg-deb -f ./kestra-html_*.deb Version)
check "the tool runs" sh -c "kestra-html --version | grep -qFx 'kestra-html $version'"
check "the tool reproduces a page" kestra-html check harbour.html

check "all packages install" apt-get install -q -y --no-install-recommends ./*.deb
check "compilers install" apt-get install -q -y --no-install-recommends g++ cmake make pkg-config
[ -d $examples ] || {
    # A minimal system may leave documents out.
    dpkg-deb -x ./kestra-html-doc_*.deb /tmp/doc
    examples=/tmp/doc$examples
}

mkdir -p /tmp/built
cpp=$examples/links/DocumentLinks.cpp
check "C++ by pkg-config compiles" g++ -std=c++20 -o /tmp/built/links $cpp $(pkg-config --cflags --libs kestra-html)
check "C++ by pkg-config runs" same_links /tmp/built/links harbour.links
check "C by pkg-config compiles" gcc -std=c99 -pedantic-errors -o /tmp/built/c-links $examples/c/links.c \
    $(pkg-config --cflags --libs kestra-html)
check "C by pkg-config runs" same_links /tmp/built/c-links harbour.decoded-links
for project in c links rewrite; do
    check "$project by CMake configures" cmake -S $examples/$project -B /tmp/built/$project-cmake
    check "$project by CMake compiles" cmake --build /tmp/built/$project-cmake
done
check "C by CMake runs" same_links /tmp/built/c-cmake/c-links harbour.decoded-links
check "C++ by CMake runs" same_links /tmp/built/links-cmake/document-links harbour.links
check "the rewriting example runs" /tmp/built/rewrite-cmake/safe-links unsafe.html /tmp/built/safe.html
check "its page is as expected" cmp safe.html /tmp/built/safe.html
# It finds those of other elements than the programs of C look at as well, after these.
check "Python finds links" python3 -c "
import pathlib
import kestra_html
expected = pathlib.Path('harbour.decoded-links').read_text(encoding='utf-8').split('\n')[:-1]
links = kestra_html.links(pathlib.Path('harbour.html'))
assert links[:len(expected)] == expected, links"

check "they are removed" apt-get purge -q -y \
    "libkestra-html[0-9.]*" libkestra-html-dev kestra-html python3-kestra-html kestra-html-doc
find /usr /etc /var/lib/dpkg -path '*kestra*' >/tmp/left || true
check "nothing of them stays" sh -c '! test -s /tmp/left || { cat /tmp/left; false; }'

[ $failed -eq 0 ] && echo "all is well"
exit $failed
