#!/usr/bin/env bash
# Builds the guest's initramfs: busybox-static, the kernel's IPMI modules (and what they
# depend on) with a fresh modules.dep, the init script, and the given programs in /bin with
# the shared libraries they need.
# Usage: makeInitramfs.sh <kernel-root> <kernel-version> <init-script> <output.gz> <program>...
set -euo pipefail
kroot=$1 version=$2 init=$3 out=$4
shift 4
work=$(mktemp -d "${out}.tree.XXXXXX")
trap 'rm -rf "$work"' EXIT

mkdir -p "$work"/{bin,sbin,proc,sys,dev,tmp,etc,lib/modules/"$version"}
cp /bin/busybox "$work/bin/busybox"
ln -s busybox "$work/bin/sh"
install -m 755 "$init" "$work/init"

# The IPMI modules and their dependencies, by the unpacked tree's own modules.dep.
moddir=lib/modules/$version
wanted=$(grep -E '^kernel/drivers/char/ipmi/[^:]*:' "$kroot/$moddir/modules.dep" | tr -d ':' | tr ' ' '\n' | sort -u)
(cd "$kroot/$moddir" && cp --parents $wanted "$work/$moddir/")
cp "$kroot/$moddir"/modules.order "$kroot/$moddir"/modules.builtin* "$work/$moddir/" 2>/dev/null || true
depmod -b "$work" "$version"

# The test program runs the very binary and shared libraries (jsoncpp, libstdc++, libc) of the
# host build; the peers come as Debian built them. A script is copied as it stands.
for program in "$@"; do
    if [ "$(head -c 2 "$program")" = '#!' ]; then
        cp "$program" "$work/bin/${program##*/}"
        continue
    fi
    strip -o "$work/bin/${program##*/}" "$program"
    for lib in $(ldd "$program" | awk '/=> \//{print $3} /^\t\/lib/{print $1}'); do
        install -D "$lib" "$work$lib"  # the file a link names, under the link's name
    done
done

(cd "$work" && find . | cpio -o -H newc --quiet) | gzip -1 > "$out"
