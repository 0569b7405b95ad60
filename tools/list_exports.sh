#!/usr/bin/env bash
# What a DLL exports, a name a line, sorted, each followed by how it reads. Usage: list_exports.sh DLL
# dll/exports.txt is made by: tools/list_exports.sh build/windows/bin/toolbelt.dll >dll/exports.txt
set -eu
names=$(i686-w64-mingw32-objdump -p "$1" | awk '/Ordinal\/Name Pointer/ { listed = 1; next } listed && !NF { exit } listed { print $NF }' | LC_ALL=C sort)
[ -n "$names" ] || { echo "list_exports.sh: $1 exports nothing" >&2; exit 1; }
paste -d ' ' <(echo "$names") <(c++filt <<<"$names") | awk '{ name = $1; sub(/^[^ ]* /, ""); print (name == $0) ? name : name "  " $0 }'
