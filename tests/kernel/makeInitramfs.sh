#!/usr/bin/env bash
# Builds the guest's initramfs: busybox-static, the kernel's IPMI modules (and what they
# depend on) with a fresh modules.dep, the test program with the shared libraries it needs,
# and the init script.
# Usage: makeInitramfs.sh <kernel-root> <kernel-version> <guest-program> <init-script> <output.gz>
set -euo pipefail
kroot=$1 version=$2 program=$3 init=$4 out=$5
work=$(mktemp -d "${out}.tree.XXXXXX")
trap 'rm -rf "$work"' EXIT

mkdir -p "$work"/{bin,sbin,proc,sys,dev,tmp,etc,lib/modules/"$version"}
cp /bin/busybox "$work/bin/busybox"
ln -s busybox "$work/bin/sh"
cp "$init" "$work/init"
chmod 755 "$work/init"

# The IPMI modules and their dependencies, by the unpacked tree's own modules.dep.
moddir=lib/modules/$version
deps=$kroot/$moddir/modules.dep
wanted=$(grep -E '^kernel/drivers/char/ipmi/[^:]*:' "$deps" | tr -d ':' | tr ' ' '\n' | sort -u)
for m in $wanted; do
    mkdir -p "$work/$moddir/$(dirname "$m")"
    cp "$kroot/$moddir/$m" "$work/$moddir/$m"
done
cp "$kroot/$moddir"/modules.order "$kroot/$moddir"/modules.builtin* "$work/$moddir/" 2>/dev/null || true
depmod -b "$work" "$version"

# The test program is linked against the project's static libraries; jsoncpp, libstdc++ and
# libc come along as the shared objects the host build uses.
cp "$program" "$work/zuvKernelGuest"
for lib in $(ldd "$program" | awk '/=> \//{print $3} /^\t\/lib/{print $1}'); do
    mkdir -p "$work$(dirname "$lib")"
    cp -L "$lib" "$work$lib"
done

(cd "$work" && find . | cpio -o -H newc --quiet) | gzip -1 > "$out"
