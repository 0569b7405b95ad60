#!/usr/bin/env bash
# clang-tidy over the library, the tool, the benchmarks and the fuzz targets, with the checks of .clang-tidy. Files for
# Windows are read with the cross compiler's headers. Usage: tools/tidy.sh [FILE...]
set -eu
cd "$(dirname "$0")/.."
cross=i686-w64-mingw32
# The folders that the compiler itself searches, in its order.
search() { "$@" -E -x c++ -v /dev/null 2>&1 >/dev/null | sed -n '/^#include </,/^End/ s/^ \(\/.*\)/-isystem\n\1/p'; }
common=(-std=c++20 -I. -isystem build/deps/json-parser-1.1.0 -DTOOLBELT_STATIC -DTOOLBELT_TIDY)
mapfile -t windows < <(search $cross-g++-posix)
windows+=(--target=i686-w64-windows-gnu -nostdinc -DUNICODE -D_UNICODE -D_WIN32_WINNT=0x0501 -DWINVER=0x0501)
host=(-m32 -fshort-wchar)

if [ $# -gt 0 ]; then files=("$@"); else mapfile -t files < <(git ls-files 'crypto/*.cpp' 'Includes/*.cpp' 'json/*.cpp' 'net/*.cpp' 'speed/*.cpp' 'dll/*.cpp' 'cli/*.cpp'); fi
one() { # FILE: prints what was found
    local features=()
    case "$1" in *_sse2.* | *_ssse3.* | *_avx2.* | *_shani.* | *_aesni.* | *_vaes.*) features=(-mavx2 -maes -msha -mvaes -mbmi2) ;; esac
    case "$1" in
        Includes/system/* | Includes/cDlg/* | net/post* | dll/* | cli/*) clang-tidy --quiet "$1" -- "${common[@]}" "${features[@]}" "${windows[@]}" ;;
        *) clang-tidy --quiet "$1" -- "${common[@]}" "${features[@]}" "${host[@]}" ;;
    esac 2>&1 | grep -vE '^[0-9]+ warnings? (generated|treated)|^Suppressed|^Use -header-filter' || true
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
count=0
for file in "${files[@]}"; do
    while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do wait -n; done
    count=$((count + 1))
    one "$file" >"$work/$count" &
done
wait
cat "$work"/* | sort -u >"$work/all"
if [ -s "$work/all" ]; then cat "$work"/[0-9]*; echo "tidy: findings in $count files"; exit 1; fi
echo "tidy: $count files are clean"
