#!/usr/bin/env bash
# Makes build/package/toolbelt-VERSION-win32.zip of the windows build, which must be there. Entries are sorted and have
# one fixed time, so that equal contents make equal archives. Usage: package.sh [--verify]
# With --verify the whole is built a second time, from a copy of the tree in another folder and without a compiler cache,
# and both archives are compared.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/tools/common.sh"
[ $# -eq 0 ] || [ "$*" = --verify ] || die "package takes no argument, or --verify"
package_dir=$build_dir/package

# pack BUILD FOLDER: installs into FOLDER/NAME and makes FOLDER/NAME.zip.
pack() {
    rm -rf "${2:?}/$name" "$2/$name.zip"
    cmake --install "$1" --prefix "$2/$name"
    find "$2/$name" -type d -exec chmod 755 {} +
    find "$2/$name" -type f -exec chmod 644 {} +
    find "$2/$name" -exec touch -d '2000-01-01T00:00:00Z' {} +
    (cd "$2" && find "$name" -type f | LC_ALL=C sort | TZ=UTC zip -X -9 -q -@ "$name.zip")
}

build_again() { # in $again, as the first build lies in the tree
    mkdir -p "$again/build"
    tar -C "$root" --exclude=./build --exclude=./.git -cf - . | tar -C "$again" -xf -
    ln -s "$build_dir/deps" "$again/build/deps"
    export CCACHE_DISABLE=1
    cmake -S "$again" -B "$again/build/windows" --preset windows -DTOOLBELT_TESTS=OFF
    cmake --build "$again/build/windows" --target toolbelt toolbelt_exe
}

version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build_dir/windows/CMakeCache.txt")
name=toolbelt-$version-win32
mkdir -p "$package_dir"
step "packing $name.zip" package pack "$build_dir/windows" "$package_dir"
if [ "${1:-}" = --verify ]; then
    again=$(mktemp -d)
    trap 'rm -rf "$again"' EXIT
    step "building all a second time in another folder" package-again build_again
    mkdir "$again/package"
    step "packing it" package-again pack "$again/build/windows" "$again/package"
    if ! diff -qr "$package_dir/$name" "$again/package/$name" >&2 || ! cmp "$package_dir/$name.zip" "$again/package/$name.zip" >&2; then
        rm -rf "$package_dir/again"
        mv "$again/package" "$package_dir/again"
        die "not the same when it is built elsewhere: $package_dir/again"
    fi
    say "    the same bytes"
fi
(cd "$package_dir" && find "$name" -type f -not -path '*/include/*' -printf '    %9s  %p\n' | LC_ALL=C sort -k 2 >&2)
say "               and $(find "$package_dir/$name/include" -name '*.h' | wc -l) headers in $name/include/toolbelt"
say "==> $package_dir/$name.zip ($(stat -c %s "$package_dir/$name.zip") bytes)"
