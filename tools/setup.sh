#!/usr/bin/env bash
# Installs what the builds and tests need on Debian 12. Usage: tools/setup.sh host|windows|fuzz|emulated|docs
# "host" is the native engine alone; "windows" adds the cross compiler and Wine, "fuzz" the compiler of the fuzz targets,
# "emulated" the emulator of newer processors, and "docs" is what makes the reference. Does nothing, at once, when all is there.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/tools/common.sh"

host_packages=(cmake ninja-build g++ g++-multilib googletest ca-certificates openssl libcli11-dev nlohmann-json3-dev libgmp-dev)
windows_packages=(g++-mingw-w64-i686-posix clang clang-tidy pkgconf zip patch xz-utils wine wine32:i386 libgnutls30:i386 python3-minimal xvfb xauth fonts-wine fonts-liberation)
fuzz_packages=(clang libclang-rt-14-dev patch xz-utils)
emulated_packages=(bochs bochsbios vgabios isolinux syslinux-common xorriso)
docs_packages=(cmake doxygen)
json_parser_version=1.1.0 # json/CMakeLists.txt names it too
json_parser=$build_dir/deps/json-parser-$json_parser_version

# missing PACKAGE...: prints those that are not installed.
missing() {
    local package
    for package in "$@"; do
        case "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" in
            installed) ;;
            *) printf '%s\n' "$package" ;;
        esac
    done
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"
    elif command -v sudo >/dev/null; then sudo "$@"
    else die "installing packages needs root: run '$root/run setup' once as root"; fi
}

apt() { as_root env DEBIAN_FRONTEND=noninteractive apt-get -y --no-install-recommends "$@"; }

# One unreachable or lagging suite must not end the set-up: what counts is whether the install resolves.
update_lists() { apt update || say "apt-get update reported errors; going on with the lists there are"; }

# private_sources TYPE: fills $build_dir/apt with the machine's own sources, the main and updates suites alone, as TYPE
# (deb or deb-src), and sets $private_options for apt-get.
private_sources() {
    local private=$build_dir/apt/$1 file
    mkdir -p "$private/sources" "$private/lists/partial" "$private/cache/archives/partial"
    rm -f "$private/sources/"*
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ -r "$file" ] && grep -E '^deb .*[[:space:]]bookworm(-updates)?[[:space:]]' "$file" | sed "s/^deb /$1 /" >>"$private/sources/main.list" || true
    done
    for file in /etc/apt/sources.list.d/*.sources; do
        [ -r "$file" ] && awk 'BEGIN { RS = ""; ORS = "\n\n" } /Suites:[^\n]*bookworm/ && !/security/' "$file" |
            sed "s/^Types:.*/Types: $1/" >>"$private/sources/main.sources"
    done
    cat "$private/sources/"* 2>/dev/null | grep -q . || die "no Debian 12 (bookworm) sources in /etc/apt; add them and try again"
    private_options=(-o Dir::Etc::sourcelist=/dev/null -o "Dir::Etc::sourceparts=$private/sources"
        -o "Dir::State::Lists=$private/lists" -o "Dir::Cache=$private/cache" -o APT::Sandbox::User=root)
}

# Packages that exist for both architectures must have equal versions, and a security mirror can lag behind for one of
# them. The point release alone always agrees with itself.
install_from_point_release() {
    private_sources deb
    apt "${private_options[@]}" update
    apt "${private_options[@]}" install "$@" || apt "${private_options[@]}" --allow-downgrades install "$@"
}

# json-parser in the sources that Debian ships, its patches applied (one of them mends a read beyond the text), in
# $json_parser. It is there whole or not at all.
fetch_json_parser() {
    local work=$json_parser.tmp name
    private_sources deb-src
    rm -rf "$work"
    mkdir -p "$work"
    apt-get -q "${private_options[@]}" update
    (cd "$work" && apt-get -q "${private_options[@]}" source --download-only libjsonparser)
    for name in "$work/libjsonparser_$json_parser_version".orig.tar.* "$work/libjsonparser_$json_parser_version"-*.debian.tar.*; do
        [ -e "$name" ] || { echo "not there: ${name##*/}"; ls "$work"; return 1; }
        tar -C "$work" -xf "$name"
    done
    while read -r name; do
        patch -d "$work/json-parser-$json_parser_version" -p1 -i "$work/debian/patches/$name"
    done <"$work/debian/patches/series"
    mv "$work/json-parser-$json_parser_version" "$json_parser"
    rm -f "$build_dir"/*/build.ninja # what was configured without it is configured again
    rm -rf "$work" "$build_dir/apt/deb-src"
}

install() {
    update_lists
    apt install "$@" || { say "the plain install did not resolve; trying the point release alone"; install_from_point_release "$@"; }
}

kind=${1:-}
case "$kind" in
    host | windows | fuzz | emulated | docs) ;;
    *) die "usage: tools/setup.sh host|windows|fuzz|emulated|docs" ;;
esac
packages=("${host_packages[@]}")
[ "$kind" = windows ] && packages+=("${windows_packages[@]}")
[ "$kind" = fuzz ] && packages+=("${fuzz_packages[@]}")
[ "$kind" = emulated ] && packages+=("${emulated_packages[@]}")
[ "$kind" = docs ] && packages=("${docs_packages[@]}")
mapfile -t wanted < <(missing "${packages[@]}")
if [ "${#wanted[@]}" -gt 0 ]; then
    command -v apt-get >/dev/null || die "this set-up knows Debian only; install these yourself: ${wanted[*]}"
    if [ "$kind" = windows ] && ! dpkg --print-foreign-architectures | grep -qx i386; then
        as_root dpkg --add-architecture i386
    fi
    step "installing ${wanted[*]}" setup install "${wanted[@]}"
fi

if [[ $kind == windows || $kind == fuzz ]] && [ ! -e "$json_parser" ]; then
    step "fetching json-parser $json_parser_version" json-parser fetch_json_parser
fi

# Wine's first start builds its prefix; it wants a screen while it does.
if [ "$kind" = windows ] && [ ! -e "$WINEPREFIX/ready" ]; then
    mkdir -p "$WINEPREFIX"
    # shellcheck disable=SC2016
    step "preparing Wine (once)" wine xvfb-run -a sh -c 'wineboot --init && wineserver -w'
    touch "$WINEPREFIX/ready"
fi

# Wine's own faces of the dialogs' font and of the signs in captions: it finds them in this folder alone.
if [ "$kind" = windows ]; then
    for font in marlett tahoma tahomabd; do
        [ -e "$WINEPREFIX/drive_c/windows/Fonts/$font.ttf" ] || cp "/usr/share/wine/fonts/$font.ttf" "$WINEPREFIX/drive_c/windows/Fonts/"
    done
fi
