#!/usr/bin/env bash
# Passes when CTest calls the test a failure and its output says why. Usage: caught.sh CTEST FOLDER NAME EXPECTED
set -u
output=$("$1" --test-dir "$2" -R "^$3\$" --output-on-failure 2>&1)
status=$?
grep -E "$4|tests passed|Failed|Timeout" <<<"$output"
[ "$status" -ne 0 ] || { echo "caught.sh: the fault passed"; exit 1; }
grep -q '^0% tests passed, 1 tests failed out of 1' <<<"$output" || { echo "caught.sh: it did not run, or not alone"; exit 1; }
grep -qE "$4" <<<"$output" || { echo "caught.sh: not for what it is: $output"; exit 1; }
