#!/usr/bin/env bash
# Runs one GoogleTest program. Usage: run_suite.sh [EMULATOR] PROGRAM [ARGS...]
# A program that crashes under Wine can still end with exit code 0, so its own closing line is demanded too; a skipped
# test counts as a failure.
set -u
export LC_ALL=C.UTF-8 # by which Wine translates file names
output=$(mktemp)
trap 'rm -f "$output"' EXIT
"$@" >"$output" 2>&1 </dev/null
status=$?
tr -d '\r' <"$output"
[ "$status" -eq 0 ] || { echo "run_suite: exit code $status"; exit 1; }
tr -d '\r' <"$output" | grep -qE '^\[  PASSED  \] [1-9][0-9]* tests?\.$' || { echo "run_suite: no closing line of passed tests"; exit 1; }
if grep -qE '^\[  (FAILED|SKIPPED) ' "$output"; then echo "run_suite: a test failed or was skipped"; exit 1; fi
