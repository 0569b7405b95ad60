#!/usr/bin/env bash
# Ctrl+C on a real console (a pseudo-terminal) in the midst of a search: the program says so, ends within a second and
# leaves no file. Usage: ctrl_c.sh [EMULATOR] TOOLBELT.EXE
set -u
export LC_ALL=C.UTF-8
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
set -- "${@:1:$#-1}" "$(realpath "${!#}")"
printf -v program '%q ' "$@"
cd "$folder" || exit 1
fail() { echo "$1:"; sed 's/\x1b\[[?0-9]*[a-zA-Z]//g' screen; exit 1; }

mkfifo keys
script -qefc "$program key generate rsa --safe-primes --bits 3072 --out pair" screen <keys >/dev/null 2>&1 &
exec 3>keys
for _ in $(seq 300); do
    grep -q "candidates tried, .* per second" screen 2>/dev/null && break
    sleep 0.1
done
grep -q "candidates tried" screen || fail "no sign of life within half a minute"
printf '\003' >&3
start=$(date +%s%N)
wait %1
status=$?
elapsed=$((($(date +%s%N) - start) / 1000000))
exec 3>&-

grep -q "stopped" screen || fail "it does not say that it was stopped"
[ "$status" -eq 4 ] || fail "exit code $status instead of 4"
[ -z "$(ls pair* 2>/dev/null)" ] || fail "it left $(ls pair*)"
[ "$elapsed" -lt 1500 ] || fail "it took $elapsed ms to stop" # a second, and what starting and ending a console takes
echo "stopped after $elapsed ms, no file left"
