#!/usr/bin/env bash
# The DLL's file: how it may be loaded, what it imports and exports, and which version it says it is.
# Usage: file_test.sh DLL VERSION
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
dll=$1 version=$2 checks=0 failed=0
headers=$(i686-w64-mingw32-objdump -p "$dll")
check() { # TITLE COMMAND...
    checks=$((checks + 1))
    "${@:2}" || { echo "file_test: $1"; failed=1; }
}
says() { grep -qE "$1" <<<"$headers"; }
never() { ! says "$1"; }

check "no 32-bit library" says '^.*file format pei-i386$'
check "no DLL" says $'^\tDLL$'
check "cannot be moved" never 'relocations stripped'
check "has no relocations" says '^Entry 5 [0-9a-f]+ 0*[1-9a-f][0-9a-f]* Base Relocation Directory'
check "is always loaded at one place" says $'^\t+DYNAMIC_BASE$'
check "may run data" says $'^\t+NX_COMPAT$'
# Old systems are customers too: nothing newer than Windows XP may be demanded, of which the runtime knows one function.
check "demands a newer system" says $'^MajorSubsystemVersion\t[0-5]$'
check "imports what came after Windows XP" never '\bGetTickCount64$'
imports=$(sed -n 's/^\tDLL Name: //p' <<<"$headers" | tr '[:upper:]' '[:lower:]')
system=$(printf '%s.dll\n' advapi32 comctl32 gdi32 kernel32 msvcrt shell32 user32 wininet)
check "imports nothing" test -n "$imports"
check "imports a library that is not the system's" test -z "$(comm -23 <(sort -u <<<"$imports") <(sort <<<"$system"))"

# The list in the tree is what was meant to be public. A name more or less is either a mistake or a decision: then the
# list is made anew. Functions, constants and virtual tables of namespace toolbelt, by the compiler's mangling, and C's.
names=$(cut -d ' ' -f 1 "$root/dll/exports.txt" | tr -d '\r')
check "exports other names than dll/exports.txt lists" \
    diff <(echo "$names") <("$root/tools/list_exports.sh" "$dll" | cut -d ' ' -f 1)
check "exports a name that is not the library's" test -z "$(grep -vE 'NK?8toolbelt|^tb_' <<<"$names")"
check "exports hardly anything" test "$(wc -l <<<"$names")" -gt 100
number() { sed -nE "s/^\t$1 *\t+([0-9a-f]{8})\$/\1/p" <<<"$headers" | head -n 1; }
check "does not tell how many it exports" test -n "$(number 'Export Address Table')"
check "exports by number alone" test "$(number 'Export Address Table')" = "$(number '\[Name Pointer\/Ordinal\] Table')"

resources=$(i686-w64-mingw32-windres -J coff -O rc "$dll")
check "is another version" grep -qx " FILEVERSION ${version//./, }, 0" <<<"$resources"
check "is another product" grep -q 'VALUE "ProductName", "Toolbelt"$' <<<"$resources"

echo "file_test: $checks checks"
exit $failed
