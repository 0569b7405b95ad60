#!/usr/bin/env bash
# Runs what compares the code paths on an emulated processor (Tiger Lake: AVX-512, IFMA, VBMI, VAES, GFNI), for machines
# that lack its instructions. It is some hundred times slower, and tells nothing of speed. Usage: emulate.sh [TEST FILTER],
# for example: emulate.sh test_hash '*Tiers*'
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/tools/common.sh"

suites=(bignum/test_bignum:BigNumTiers*:*LongQuotients:*PairsOfPowers hash/test_hash:*Tier* cipher/test_cipher:*Tier*:Cpu*)
if [ $# -gt 0 ]; then
    list=$(cd "$root/tests" && grep -l "tb_suite($1\b" ./*/CMakeLists.txt) || die "no such test program: $1"
    suites=("$(basename "$(dirname "$list")")/$1:${2:-*}")
fi
seconds=${TOOLBELT_EMULATED_SECONDS:-3600}
"$root/tools/setup.sh" emulated
work=$build_dir/emulated/run
mkdir -p "$work/disc/isolinux"
say "==> building the system that the tests run on"
# At 640 MiB, above the programs; it has no library and no standard start.
g++ -std=c++20 -m32 -O1 -Wall -Wextra -ffreestanding -fno-pic -fno-exceptions -fno-asynchronous-unwind-tables -fno-stack-protector \
    -mgeneral-regs-only -nostdlib -static -no-pie -Wl,-Ttext=0x28001000,--section-start=.multiboot=0x28000000,--build-id=none,-z,noexecstack \
    -o "$work/disc/system" "$root/tests/emulated/system.cpp" -lgcc
configure_and_build emulated $(printf '%s\n' "${suites[@]}" | sed 's/.*\///; s/:.*//')
tar -C / --format=ustar -cf "$work/disc/files" "$(realpath --relative-to=/ "$root/tests/vectors")"
cp /usr/lib/ISOLINUX/isolinux.bin /usr/lib/syslinux/modules/bios/{ldlinux,mboot,libcom32}.c32 "$work/disc/isolinux/"
echo continue >"$work/commands"
machine() { # MODEL
    cat >"$work/machine" <<TEXT
plugin_ctrl: unmapped=1, biosdev=1
display_library: rfb, options="timeout=0"
romimage: file=/usr/share/bochs/BIOS-bochs-latest
vgaromimage: file=/usr/share/bochs/VGABIOS-lgpl-latest
memory: guest=1536, host=1536
cpu: model=$1, count=1, ips=15000000, reset_on_triple_fault=0, ignore_bad_msrs=1
clock: sync=none
ata0-master: type=cdrom, path=$work/disc.iso, status=inserted
boot: cdrom
port_e9_hack: enabled=1
log: $work/log
panic: action=fatal
error: action=report
info: action=ignore
TEXT
}
failed=0
for suite in "${suites[@]}"; do
    program=${suite%%:*} filter=${suite#*:} output=$log_dir/emulated-${program##*/}.log
    say "==> emulating $program, $filter"
    case "$program" in
        hash/*) machine corei7_skylake_x ;; # without the instructions for SHA: the emulator's SHA-1 is wrong
        *) machine tigerlake ;;
    esac
    strip -o "$work/disc/program" "$build_dir/emulated/tests/$program"
    printf 'DEFAULT run\nPROMPT 0\nTIMEOUT 1\nLABEL run\n KERNEL mboot.c32\n APPEND /system --- /program %s --gtest_filter=%s --- /files files\n' \
        "${program##*/}" "$filter" >"$work/disc/isolinux/isolinux.cfg"
    xorriso -as mkisofs -quiet -o "$work/disc.iso" -b isolinux/isolinux.bin -c isolinux/boot.cat -no-emul-boot -boot-load-size 4 \
        -boot-info-table "$work/disc" 2>"$log_dir/emulated-disc.log"
    timeout "$seconds" bochs -q -f "$work/machine" -rc "$work/commands" >"$output" 2>&1 </dev/null || true # it ends with 1 at best
    tr -d '\r' <"$output" | sed -n '/^== start/,/^== exit/p' | grep -E '^\[|Failure|^==|features' || true
    grep -q '^== exit 0' "$output" && grep -q '^\[  PASSED  \] [1-9]' "$output" || failed=1
done
[ "$failed" -eq 0 ] || die "not all of it passed; logs are in $log_dir"
say "All of it passed."
