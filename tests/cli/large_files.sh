#!/usr/bin/env bash
# Files of more than 4 GiB. Usage: large_files.sh [EMULATOR] TOOLBELT.EXE. A digest and a decryption of a sparse
# file, which openssl does too; the output goes through a pipe, so that no second file is needed.
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
file=$work/large
truncate -s $((4294967296 + 32)) "$file" # whole blocks
for place in 0 2147483640 4294967290; do printf 'not zeros' | dd of="$file" bs=1 seek=$place conv=notrunc status=none; done
key=$(printf '%064d' 7) iv=$(printf '%032d' 9)

same() { # NAME OURS THEIRS
    if [ -n "$2" ] && [ "$2" = "$3" ]; then echo "$1: $2"; else echo "FAILED $1: $2, not $3"; exit 1; fi
}
same digest "$("$@" digest -a sha1 "$file" | cut -c1-40)" "$(openssl dgst -sha1 -r "$file" | cut -c1-40)"
same decryption "$("$@" cipher decrypt -c aes-256 --key "$key" --iv "$iv" "$file" - | openssl dgst -sha1 -r | cut -c1-40)" \
    "$(openssl enc -d -aes-256-cbc -nopad -K "$key" -iv "$iv" -in "$file" | openssl dgst -sha1 -r | cut -c1-40)"
