#!/usr/bin/env bash
# The version is CMakeLists.txt's: what was built says that one, and the two texts that cannot be made from it agree.
# (test_dll and test_c_surface ask the DLL itself.) Usage: version_test.sh BUILD CTEST-EMULATOR
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$1 wine=$2
. "$root/tools/common.sh"
version=$(sed -nE 's/^project\(toolbelt VERSION ([0-9]+\.[0-9]+\.[0-9]+) .*/\1/p' "$root/CMakeLists.txt")
[ -n "$version" ] || { echo "version_test: CMakeLists.txt tells no version"; exit 1; }
failed=0
same() { # WHAT EXPECTED FOUND
    [ "$2" = "$3" ] || { echo "version_test: $1: \"$3\" instead of \"$2\""; failed=1; }
}
tool() { "$wine" "$build/bin/toolbelt.exe" "$@" </dev/null | tr -d '\r'; }
same "toolbelt --version" "toolbelt $version" "$(tool --version)"
same "the DLL's resource, as the tool reads it" "$version" "$(tool system | sed -n 's/^ *library version: //p')"
same "toolbelt.pc" "$version" "$(sed -n 's/^Version: //p' "$build/package/toolbelt.pc")"
same "the first entry of CHANGELOG.md" "$version" "$(sed -nE 's/^## ([0-9.]+).*/\1/p' "$root/CHANGELOG.md" | head -n 1)"
same "the tool's manifest" "$version.0" "$(sed -nE 's/.*name="toolbelt" version="([0-9.]+)".*/\1/p' "$root/cli/toolbelt.manifest")"
cd "$root"
others=$(grep -rwlF "$version" crypto Includes json net speed bench include dll cli cmake examples docs tools run README.md | grep -vx cli/toolbelt.manifest || true)
same "files that hold the version too" "" "$others"
[ "$failed" -eq 0 ] && echo "version_test: all say $version"
exit "$failed"
