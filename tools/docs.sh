#!/usr/bin/env bash
# Makes the guides and the reference of the public headers, as they are installed, in build/docs/html.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/tools/common.sh"

"$root/tools/setup.sh" docs
export TOOLBELT_DOCS=$build_dir/docs
TOOLBELT_VERSION=$(sed -nE 's/^project\(toolbelt VERSION ([0-9.]+).*/\1/p' "$root/CMakeLists.txt")
export TOOLBELT_VERSION
rm -rf "$TOOLBELT_DOCS"
mkdir -p "$TOOLBELT_DOCS"
cmake "-Droot=$root" "-DCMAKE_INSTALL_PREFIX=$TOOLBELT_DOCS" -P "$root/cmake/package/headers.cmake" >/dev/null
(cd "$root" && step "making the reference" docs doxygen docs/Doxyfile)
say "Made: $TOOLBELT_DOCS/html/index.html"
