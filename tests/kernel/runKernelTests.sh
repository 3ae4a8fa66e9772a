#!/usr/bin/env bash
# Boots the test guest under QEMU (TCG) once per configuration and judges its consoles.
# Exit 0: all passed; anything else: failure, also when QEMU or a peer is missing.
# Usage: runKernelTests.sh <kernel cache dir> <work dir> <zuvKernelGuest> <zuvKernelExternHost>
set -euo pipefail
here=$(cd "${0%/*}" && pwd)
cache=$1 work=$2 guest=$3 externHost=$4

qemu=$(command -v qemu-system-x86_64) && "$qemu" --version >/dev/null 2>&1 ||
    { echo "FAIL: qemu-system-x86_64 is not installed or cannot run here (package qemu-system-x86)"; exit 1; }
peers=()  # the programs the guest compares the product with
for peer in ipmitool dmidecode; do
    peers+=("$(command -v $peer)") || { echo "FAIL: $peer is not installed (package $peer)"; exit 1; }
done

mkdir -p "$work"
read -r kroot version < <(bash "$here/prepareKernel.sh" "$cache")
bash "$here/makeInitramfs.sh" "$kroot" "$version" "$here/guestInit.sh" "$work/initrd.gz" "$guest" "${peers[@]}"

# The repository of QEMU's BMC (sdrfile=): records one after another, each its header (id,
# version, type, body length) and body. Full and compact sensor, event-only, FRU and MC locator
# records of their usual lengths (with ID strings of 0 to 16 bytes), OEM records of up to 250
# bytes of body, the longest a record can have, and last, a record with no body.
sdrcount=120
kinds=(1:43 2:27 3:12 17:11 18:11 192:0) oem=(250 3 16 17 32 33 100 249 48 200)
for ((i = 0; i < sdrcount; i++)); do
    type=${kinds[i % 6]%:*} length=$((${kinds[i % 6]#*:} + i % 17))
    ((type != 192)) || length=${oem[i / 6 % 10]}
    ((i < sdrcount - 1)) || length=0
    bytes=($i 0 81 "$type" "$length")
    for ((j = 0; j < length; j++)); do bytes+=($(((i * 31 + j * 7 + 1) & 255))); done
    printf '%b' "$(printf '\\x%02x' "${bytes[@]}")"
done >"$work/sdr.bin"
# A system slot (type 9) structure, "PCIe-Slot-1" at bus 2, device 1, for the firmware to add.
printf '\x09\x11\x00\x09\x01\xa5\x0d\x03\x04\x01\x00\x0c\x01\x00\x00\x02\x08PCIe-Slot-1\x00\x00' >"$work/slot.bin"

failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

# boot <name> <gtest filter> <SMBIOS row> [QEMU options...]; the filter selects three tests.
# An SMBIOS row: the platform code and UUID text the product must report, the UUID that the
# firmware stores, then QEMU's -smbios options. The guest compares the rest with dmidecode.
boot() {
    local name=$1 filter=$2 console=$work/console-$1.log start=$SECONDS
    local -a row=($3) smbios=() run=(bash "$here/bootGuest.sh")
    local append="zuvmode=$name zuvfilter=$filter zuvsdrcount=$sdrcount"
    for s in "${row[@]:3}"; do smbios+=(-smbios "$s"); done
    shift 3
    # Behind QEMU's external BMC device the host program serves the simulated RMC.
    [ -z "${bmcsocket:-}" ] || run=("$externHost" "$bmcsocket" "${run[@]}" --extern-bmc "$bmcsocket")
    "${run[@]}" "$kroot" "$version" "$work/initrd.gz" \
        "$append zuvplatform=${row[0]} zuvuuid=${row[1]} zuvfwuuid=${row[2]}" -uuid "${row[2]}" \
        -device virtio-rng-pci,id=rng0 "${smbios[@]}" "$@" </dev/null >"$console" 2>&1 ||
        fail "$name: QEMU or the host's checks failed"
    echo "boot $name took $((SECONDS - start)) s; console: $console"
    tr -d '\r' <"$console" | grep -E '^\[ *(OK|FAILED|PASSED) *\]|ZUVK|HOST|Failure|Expected|Which is|^qemu' || true
    grep -q 'ZUVK EXIT main 0' "$console" || fail "$name: the guest's tests did not pass"
    grep -q '\[  PASSED  \] 3 tests\.' "$console" || fail "$name: expected 3 passed tests"
}

# Strings longer than the product's fields and empty ones, the UUID whose fields the product
# swaps, two onboard devices (type 41) and a system slot (type 9); then the other UUID rule, a
# second family and no onboard device.
long=$(printf 'L%.0s' {1..100})
boot bmc-sim 'DriverLoading.*:BmcSim.*:Smbios.*' \
    "0 33221100-5544-11d0-8899-aabbccddeeff 00112233-4455-d011-8899-aabbccddeeff
    type=1,manufacturer=$long,product=$long$long,version=,serial=S$long$long,sku=,family=PLATFAMILY00001
    type=41,designation=Rng1,kind=other,instance=1,pcidev=rng0 type=41,designation=,kind=sound,instance=2,pcidev=rng0
    file=$work/slot.bin" \
    -device ipmi-bmc-sim,id=bmc0,sdrfile="$work/sdr.bin" -device isa-ipmi-kcs,bmc=bmc0
bmcsocket=$work/bmc.sock boot extern 'DriverLoading.*:Extern.*:Smbios.*' \
    "1 12345678-9abc-def0-1122-334455667788 12345678-9abc-def0-1122-334455667788
    type=1,manufacturer=Maker,product=Prod,version=1.0,serial=SN-0001,sku=SKU-1,family=PLATFAMILY00002"

[ "$failures" -eq 0 ] || { echo "$failures kernel test check(s) failed"; exit 1; }
echo "all kernel test checks passed"
