#!/usr/bin/env bash
# Installs what the builds and tests need on Debian 12. Usage: tools/setup.sh host|windows
# "host" is the native engine alone; "windows" adds the cross compiler and Wine. Does nothing, at once, when all is there.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/tools/common.sh"

host_packages=(cmake ninja-build g++ g++-multilib googletest ca-certificates openssl)
windows_packages=(g++-mingw-w64-i686-posix libcli11-dev wine wine32:i386 xvfb xauth)

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

# Packages that exist for both architectures must have equal versions, and a security mirror can lag behind for one of
# them. The point release alone always agrees with itself.
install_from_point_release() {
    local private=$build_dir/apt file
    mkdir -p "$private/sources" "$private/lists/partial"
    rm -f "$private/sources/"*
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ -r "$file" ] && grep -E '^deb .*[[:space:]]bookworm(-updates)?[[:space:]]' "$file" >>"$private/sources/main.list" || true
    done
    for file in /etc/apt/sources.list.d/*.sources; do
        [ -r "$file" ] && awk 'BEGIN { RS = ""; ORS = "\n\n" } /Suites:[^\n]*bookworm/ && !/security/' "$file" >>"$private/sources/main.sources"
    done
    local options=(-o Dir::Etc::sourcelist=/dev/null -o "Dir::Etc::sourceparts=$private/sources"
        -o "Dir::State::Lists=$private/lists" -o APT::Sandbox::User=root)
    apt "${options[@]}" update
    apt "${options[@]}" install "$@" || apt "${options[@]}" --allow-downgrades install "$@"
}

install() {
    update_lists
    apt install "$@" || { say "the plain install did not resolve; trying the point release alone"; install_from_point_release "$@"; }
}

kind=${1:?usage: tools/setup.sh host|windows}
packages=("${host_packages[@]}")
[ "$kind" = windows ] && packages+=("${windows_packages[@]}")
mapfile -t wanted < <(missing "${packages[@]}")
if [ "${#wanted[@]}" -gt 0 ]; then
    command -v apt-get >/dev/null || die "this set-up knows Debian only; install these yourself: ${wanted[*]}"
    if [ "$kind" = windows ] && ! dpkg --print-foreign-architectures | grep -qx i386; then
        as_root dpkg --add-architecture i386
    fi
    step "installing ${wanted[*]}" setup install "${wanted[@]}"
fi

# Wine's first start builds its prefix; it wants a screen while it does.
if [ "$kind" = windows ] && [ ! -e "$WINEPREFIX/ready" ]; then
    mkdir -p "$WINEPREFIX"
    # shellcheck disable=SC2016
    step "preparing Wine (once)" wine xvfb-run -a sh -c 'wineboot --init && wineserver -w'
    touch "$WINEPREFIX/ready"
fi
