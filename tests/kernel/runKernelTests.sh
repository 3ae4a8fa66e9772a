#!/usr/bin/env bash
# Boots the test guest under QEMU (TCG) with an emulated KCS interface and judges its console.
# Exit 0: all passed; 77: QEMU cannot run here (skipped); anything else: failure.
# Usage: runKernelTests.sh --cache <dir> --guest <zuvKernelGuest> --work <dir> [--extern <host test>]
set -euo pipefail
here=$(cd "${0%/*}" && pwd)
cache= guest= work= externTest=
while [ $# -gt 0 ]; do
    case $1 in
        --cache) cache=$2; shift 2 ;;
        --guest) guest=$2; shift 2 ;;
        --work) work=$2; shift 2 ;;
        --extern) externTest=$2; shift 2 ;;
        *) echo "unknown argument $1" >&2; exit 2 ;;
    esac
done

qemu=$(command -v qemu-system-x86_64 || true)
if [ -z "$qemu" ] || ! "$qemu" --version >/dev/null 2>&1; then
    echo "SKIPPED: qemu-system-x86_64 is not installed or cannot run here (package qemu-system-x86)"
    exit 77
fi
devices=$("$qemu" -device help 2>&1 || true)
for d in ipmi-bmc-sim ipmi-bmc-extern isa-ipmi-kcs; do
    if ! grep -q "\"$d\"" <<<"$devices"; then
        echo "SKIPPED: this QEMU has no device $d"
        exit 77
    fi
done

mkdir -p "$work"
read -r kroot version < <(bash "$here/prepareKernel.sh" "$cache")
bash "$here/makeInitramfs.sh" "$kroot" "$version" "$guest" "$here/guestInit.sh" "$work/initrd.gz"
export ZUV_KERNEL_VMLINUZ=$kroot/boot/vmlinuz-$version
export ZUV_KERNEL_INITRD=$work/initrd.gz

failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

# --- QEMU's own BMC ---
console=$work/console-bmc-sim.log
start=$(date +%s)
timeout 150 "$qemu" -m 512 -smp 1 -nographic -no-reboot -accel tcg \
    -kernel "$ZUV_KERNEL_VMLINUZ" -initrd "$ZUV_KERNEL_INITRD" \
    -append "console=ttyS0 quiet panic=-1 zuvmode=bmc-sim zuvfilter=DriverLoading.*:BmcSim.*" \
    -device ipmi-bmc-sim,id=bmc0 -device isa-ipmi-kcs,bmc=bmc0 </dev/null >"$console" 2>&1 || true
echo "guest with ipmi-bmc-sim ran $(( $(date +%s) - start )) s; console: $console"
tr -d '\r' <"$console" | grep -E '^\[ *(RUN|OK|FAILED|PASSED) *\]|ZUVK|Failure|Expected|Which is|Value of|error:' || true

grep -q 'ZUVK EXIT nodriver 0' "$console" || fail "the missing-device case did not pass"
grep -q 'ZUVK EXIT main 0' "$console" || fail "the guest tests against ipmi-bmc-sim did not pass"
grep -q 'BmcSim.CacheHoldsTheOneRecordReadInFourTransactions' "$console" || fail "the guest tests did not run"
# The service logs its failed construction once per attempt: the missing-device case makes two.
bailouts=$(grep -c 'Unable to Open IPMI channel - Bailing out' "$console" || true)
[ "$bailouts" = 2 ] || fail "expected 2 lines 'Unable to Open IPMI channel - Bailing out', saw $bailouts"
grep -q 'ZUVK MEASURE bmc-sim get_sdr_rate' "$console" || fail "no measurement from the guest"

# --- the simulated RMC behind QEMU's external BMC device ---
if [ -n "$externTest" ]; then
    start=$(date +%s)
    ZUV_KERNEL_CONSOLE=$work/console-bmc-extern.log "$externTest" || fail "the guest tests against the simulated RMC did not pass"
    grep -h 'ZUVK MEASURE' "$work/console-bmc-extern.log" || fail "no measurement from the guest behind the simulated RMC"
    echo "guest with ipmi-bmc-extern and the simulated RMC ran $(( $(date +%s) - start )) s; console: $work/console-bmc-extern.log"
fi

if [ "$failures" -ne 0 ]; then
    echo "$failures kernel test check(s) failed"
    exit 1
fi
echo "all kernel test checks passed"
