# Shared by ./run and the scripts beside this file: where things live, how a step reports itself, how a preset is built.
# Sourced, never run. Expects $root to be the top of the checkout.

build_dir=${TOOLBELT_BUILD_DIR:-$root/build}
log_dir=$build_dir/log
# Wine translates file names by the locale; a bare machine's knows ASCII alone.
export LC_ALL=C.UTF-8
export WINEPREFIX=${TOOLBELT_WINEPREFIX:-$build_dir/wine}
export WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}

say() { printf '%s\n' "$*" >&2; }
die() { say "run: $*"; exit 1; }

# step TITLE LOG COMMAND...: runs a command with its output in LOG, one line for the step, a sign of life every ten
# seconds while it lasts, and on failure the end of the log and its place.
step() {
    local title=$1 log=$log_dir/$2.log start=$SECONDS pid status=0
    shift 2
    mkdir -p "$log_dir"
    say "==> $title"
    "$@" >"$log" 2>&1 </dev/null &
    pid=$!
    local next=$((SECONDS + 10))
    while kill -0 "$pid" 2>/dev/null; do
        sleep 0.2
        if [ "$SECONDS" -ge "$next" ]; then
            say "    $((SECONDS - start)) s: $(tail -n 1 "$log" | tr -d '\r' | cut -c1-100)"
            next=$((SECONDS + 10))
        fi
    done
    wait "$pid" || status=$?
    if [ "$status" -ne 0 ]; then
        say "    failed with $status after $((SECONDS - start)) s; the end of its log:"
        tail -n 25 "$log" | sed 's/^/    | /' >&2
        say "    whole log: $log"
        return "$status"
    fi
    [ $((SECONDS - start)) -lt 2 ] || say "    done in $((SECONDS - start)) s"
}

# configure_and_build PRESET TARGET...: with no target, everything.
configure_and_build() {
    local preset=$1 targets=()
    shift
    [ $# -eq 0 ] || targets=(--target "$@")
    if [ ! -e "$build_dir/$preset/build.ninja" ]; then
        step "configuring $preset" "configure-$preset" cmake -S "$root" -B "$build_dir/$preset" --preset "$preset"
    fi
    step "building $preset" "build-$preset" cmake --build "$build_dir/$preset" "${targets[@]}"
}
