#!/usr/bin/env bash
# Boots the guest kernel with an initramfs under QEMU (TCG, one CPU, no network), the console on
# standard output; QEMU ends when the guest powers off, or after 200 s. With --extern-bmc the
# guest's KCS interface leads to a BMC program outside QEMU, which connects to this socket
# (made afresh).
# Usage: bootGuest.sh [--extern-bmc <socket>] <kernel-root> <version> <initrd> <kernel args> [QEMU options...]
set -euo pipefail
bmc=()
if [ "$1" = --extern-bmc ]; then
    bmc=(-chardev socket,id=ipmi0,path="$2",server=on,wait=off -device ipmi-bmc-extern,id=bmc0,chardev=ipmi0
        -device isa-ipmi-kcs,bmc=bmc0)
    rm -f "$2"
    shift 2
fi
kroot=$1 version=$2 initrd=$3 append=$4
shift 4
exec timeout 200 qemu-system-x86_64 -m 512 -smp 1 -nographic -no-reboot -accel tcg -nic none \
    -kernel "$kroot/boot/vmlinuz-$version" -initrd "$initrd" -append "console=ttyS0 quiet panic=-1 $append" \
    "${bmc[@]}" "$@"
