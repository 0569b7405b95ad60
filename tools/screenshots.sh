#!/usr/bin/env bash
# Pictures of the dialogs of toolbelt.exe as PNG files. Usage: screenshots.sh [FOLDER], build/screenshots if left out.
# The README's pictures are made by: tools/screenshots.sh docs/images. Needs the windows build (./run build windows).
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/tools/common.sh"
folder=${1:-$build_dir/screenshots}
tool=${TOOLBELT_EXE:-$build_dir/windows/bin/toolbelt.exe}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$folder"

picture() { # KIND COMMAND OPTIONS...: shows the dialog, which COMMAND has to close
    local kind=$1 command=$2 answer
    shift 2
    answer=$("$root/tools/with_screen.sh" wine "$tool" dialog "$kind" \
        --screenshot "$work/$kind.bmp" "$@" 2>"$work/err" </dev/null | tr -d '\r' | grep -E '^(ok|cancel)$') || true
    [ "$answer" = "$command" ] || die "the $kind dialog ended with \"$answer\": $(cat "$work/err")"
    "$root/tools/bmp_to_png.py" "$work/$kind.bmp" "$folder/dialog-$kind.png"
    printf '  %-10s closed by %-7s %s\n' "$kind" "$command" "$folder/dialog-$kind.png"
}

picture plain cancel
picture coloured cancel
picture countdown cancel --seconds 5
