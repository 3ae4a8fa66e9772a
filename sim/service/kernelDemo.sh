#!/usr/bin/env bash
# The road of demo.sh through the real Linux IPMI driver: zuvCli, the simulated service with
# "--rmc device" and the SMBIOS image tool run in the QEMU guest of the kernel tests, where the
# library loads the IPMI drivers and makes /dev/ipmi0 itself; the simulated RMC answers behind
# QEMU's external BMC device, on this machine, and at the end prints what it received. The
# guest's kernel, initramfs builder and QEMU command line are those of tests/kernel; nothing is
# written outside the build tree. The whole console is kept in <build-dir>/kernel-demo/console.log.
# Usage: sim/service/kernelDemo.sh [build-dir], or the build target kernel_demo, which builds
# zuvCli, zuvSimService, zuvSmbiosImageTool and zuvExternRmc first. Exits 1 when the road in the
# guest failed.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
kernel=$here/../../tests/kernel
build=$(cd "${1:-build}" && pwd)
work=$build/kernel-demo
mkdir -p "$work"
cache=$(sed -n 's/^ZUV_KERNEL_CACHE:PATH=//p' "$build/CMakeCache.txt")
read -r kroot version < <(bash "$kernel/prepareKernel.sh" "${cache:-$build/kernel-cache}")
bash "$kernel/makeInitramfs.sh" "$kroot" "$version" "$kernel/guestInit.sh" "$work/initrd.gz" \
    "$build/client/zuvCli" "$build/sim/service/zuvSimService" "$build/sim/smbios/zuvSmbiosImageTool" \
    "$here/demoRoad.sh" "$here/../hosttools/fakeHostTool"
start=$SECONDS
"$build/sim/bmc-extern/zuvExternRmc" "$work/bmc.sock" bash "$kernel/bootGuest.sh" --extern-bmc "$work/bmc.sock" \
    "$kroot" "$version" "$work/initrd.gz" zuvmode=demo </dev/null | tr -d '\r' | tee "$work/console.log" |
    sed -n '/ZUVK BEGIN/,$p' | grep -v ZUVK
echo "--- boot, road and power-off took $((SECONDS - start)) s"
grep -q 'ZUVK EXIT demo 0' "$work/console.log" || { echo "the road in the guest failed; see $work/console.log"; exit 1; }
