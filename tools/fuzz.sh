#!/usr/bin/env bash
# Fuzzes one target, or all in turn. Every target's new inputs and what it has found stay in build/fuzz; a finding is to
# be kept as a seed. Usage: fuzz.sh [TARGET] [SECONDS]
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/tools/common.sh"

wanted="" seconds=60 failed=0
for argument in "$@"; do
    case "$argument" in
        *[!0-9]*) wanted=$argument ;;
        *) seconds=$argument ;;
    esac
done
"$root/tools/setup.sh" fuzz
[ -z "$wanted" ] || [ -d "$root/fuzz/corpus/$wanted" ] || die "no such fuzz target: $wanted (there are: $(ls -x -w 0 "$root/fuzz/corpus"))"
say "    compiler: $(clang++ --version | head -n 1)"
configure_and_build fuzz
for target in ${wanted:-$(ls "$root/fuzz/corpus")}; do
    grown=$build_dir/fuzz/corpus/$target found=$build_dir/fuzz/found log=$log_dir/fuzz-$target.log
    mkdir -p "$grown" "$found"
    say "==> fuzzing $target for $seconds s"
    status=0
    nice "$build_dir/fuzz/fuzz/fuzz_$target" -max_total_time="$seconds" -max_len=4096 -timeout=20 -print_final_stats=1 \
        -artifact_prefix="$found/$target-" "$grown" "$root/fuzz/corpus/$target" >"$log" 2>&1 </dev/null || status=$?
    say "    $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") executions, $(sed -n 's/^stat::average_exec_per_sec: *//p' "$log") a second," \
        "$(grep -oE 'cov: [0-9]+' "$log" | tail -n 1 | grep -oE '[0-9]+') edges, $(ls "$grown" | wc -l) inputs beside $(ls "$root/fuzz/corpus/$target" | wc -l) seeds"
    [ "$status" -ne 0 ] || continue
    failed=1
    say "    FOUND (exit code $status); the end of $log:"
    grep -vE '^#[0-9]' "$log" | grep -E 'fuzz:|ERROR|SUMMARY|runtime error|Test unit written|    #[0-9] ' | head -n 25 | sed 's/^/    | /' >&2
    say "    again: $build_dir/fuzz/fuzz/fuzz_$target $(ls -t "$found/$target-"* 2>/dev/null | head -n 1)"
done
[ "$failed" -eq 0 ] || die "something was found"
say "Nothing was found."
