#!/usr/bin/env bash
# clang-tidy over the library and the tool, with the checks of .clang-tidy. What includes windows.h is read with the cross
# compiler's headers. Usage: tools/tidy.sh [FILE...]
set -eu
cd "$(dirname "$0")/.."
cross=i686-w64-mingw32
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# What clang lacks of the compiler's library: this one knows no consteval, and so no std::source_location.
mkdir "$work/include"
cat >"$work/include/source_location" <<'TEXT'
#pragma once
namespace std {
struct source_location
{
    static constexpr source_location current(int line = __builtin_LINE(), const char* file = __builtin_FILE()) noexcept { return {line, file}; }
    constexpr unsigned line() const noexcept { return static_cast<unsigned>(line_); }
    constexpr const char* file_name() const noexcept { return file_; }
    int line_;
    const char* file_;
};
}
TEXT
ln -s /usr/include/CLI "$work/include/CLI" # the rest of that folder is not for the cross compiler
# The folders that the compiler itself searches, in its order.
search() { "$@" -E -x c++ -v /dev/null 2>&1 >/dev/null | sed -n '/^#include </,/^End/ s/^ \(\/.*\)/-isystem\n\1/p'; }
common=(-std=c++20 -I. -isystem "$work/include" -isystem "$(echo "${TOOLBELT_BUILD_DIR:-build}"/deps/json-parser-*)" -DTOOLBELT_STATIC '-DTOOLBELT_VERSION="0"')
mapfile -t windows < <(search $cross-g++-posix)
windows+=(--target=i686-w64-windows-gnu -nostdinc -DUNICODE -D_UNICODE -D_WIN32_WINNT=0x0501 -DWINVER=0x0501)
host=(-m32 -fshort-wchar)

if [ $# -gt 0 ]; then files=("$@"); else mapfile -t files < <(find crypto Includes json net speed dll cli -name '*.cpp' | sort); fi
[ "${#files[@]}" -gt 0 ] || { echo "tidy: no files"; exit 2; }
# A file that was clean is not read again until what it consists of, headers included, or the checks have changed.
clean=${TOOLBELT_BUILD_DIR:-build}/tidy
mkdir -p "$clean"
one() { # FILE: prints what was found
    local features=() system=("${host[@]}") mark found output status=0
    case "$1" in
        *_sse2.* | *_ssse3.* | *_avx2.* | *_shani.* | *_aesni.* | *_vaes.*) features=(-mavx2 -maes -msha -mvaes -mbmi2) ;;
        *_avx512.* | *_ifma.* | *_vaes512.*) features=(-mavx512{f,dq,bw,vl,vbmi,ifma} -maes -mvaes) ;;
    esac
    case "$1" in
        Includes/system/* | Includes/cDlg/* | net/post* | dll/* | cli/*) system=("${windows[@]}") ;;
        Includes/*) ! grep -q '^#include <windows.h>' "$1" || system=("${windows[@]}") ;;
    esac
    local flags=("${common[@]}" "${features[@]}" "${system[@]}")
    mark=$clean/$({ echo "$1" && cat .clang-tidy tools/tidy.sh && clang++ -E -P -x c++ "${flags[@]}" "$1" 2>&1; } | sha256sum | cut -c 1-40)
    [ ! -e "$mark" ] || return 0
    output=$(clang-tidy --quiet "$1" -- "${flags[@]}" 2>&1) || status=$?
    found=$(echo "$output" |
        grep -vE '^[0-9]+ (warnings?|errors?) |^Suppressed|^Use -header-filter|^Error while processing|^Found compiler error' || true)
    [ "$status" -eq 0 ] || [ -n "$found" ] || found="$1: clang-tidy ended with $status"
    if [ -n "$found" ]; then echo "$found"; else touch "$mark"; fi
}
count=0
for file in "${files[@]}"; do
    while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do wait -n; done
    count=$((count + 1))
    [ $((count % 20)) -ne 0 ] || echo "tidy: $count of ${#files[@]} files" >&2
    one "$file" >"$work/$count" &
done
wait
bad=$(find "$work" -maxdepth 1 -name '[0-9]*' -size +0 | wc -l)
[ "$bad" -eq 0 ] || { cat "$work"/[0-9]*; echo "tidy: findings in $bad of $count files"; exit 1; }
echo "tidy: $count files are clean"
