#!/bin/sh
# Installing a project that has the library within installs the project's own program alone.
#
#     installs-only-host.sh BUILD FOLDER
set -eu

rm -rf "${2:?}"
"$CMAKE" --install "$1" --prefix "$2" >/dev/null
found=$(cd "$2" && find . ! -type d)
[ "${found%.exe}" = ./bin/host ] || { echo "installed:" $found; exit 1; }
