#!/usr/bin/env bash
# Compiles every C++ piece of the documents: tools/check_snippets.sh INCLUDE_FOLDER COMPILER [FLAGS...]. The folder holds
# the installed headers; each piece is a whole source file.
set -eu
cd "$(dirname "$0")/.."
include=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
count=0 failed=0
for document in README.md docs/*.md; do
    awk -v name="$work/$(basename "$document" .md)" \
        '/^```cpp$/ { on = 1; file = name "-" ++n ".cpp"; next } /^```$/ { on = 0 } on { print > file }' "$document"
done
for piece in "$work"/*.cpp; do
    count=$((count + 1))
    "$@" -std=c++20 -Wall -Wextra -Werror -fsyntax-only -isystem "$include" "$piece" || { failed=1; echo "in ${piece##*/}"; }
done
[ "$count" -ge 8 ] || { echo "only $count pieces were found: the check itself is broken"; exit 1; }
[ "$failed" -eq 0 ] && echo "check_snippets: $count pieces of the documents compile"
exit "$failed"
