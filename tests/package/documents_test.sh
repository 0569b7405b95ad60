#!/usr/bin/env bash
# The C++ pieces of README and the guides compile against the headers as they are installed.
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake "-Droot=$root" "-DCMAKE_INSTALL_PREFIX=$work" -P "$root/cmake/package/headers.cmake" >/dev/null
"$root/tools/check_snippets.sh" "$work/include" i686-w64-mingw32-g++-posix
