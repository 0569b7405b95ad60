#!/usr/bin/env bash
# Runs a Windows program on a virtual screen of its own. Usage: with_screen.sh WINE PROGRAM [ARGS...]
# The desktop of a Wine prefix belongs to the display, or to the absence of one, that the prefix's first program had; a
# named desktop is a new one, and it draws captions and frames too. The program's streams pass through, its exit code
# does not. A program that hangs is ended after two minutes.
set -eu
wine=$1
shift
[ -e "$1" ] || { echo "with_screen.sh: no such program: $1" >&2; exit 127; } # the desktop would wait for ever
exec timeout 120 xvfb-run -a -s "-screen 0 1280x1024x24" "$wine" explorer "/desktop=toolbelt$$,1280x1024" "$@"
