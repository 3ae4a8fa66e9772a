#!/usr/bin/env bash
# Fetches Debian's current amd64 kernel package (without installing it), unpacks the kernel
# image and the IPMI driver modules into the cache directory, runs depmod there, and prints
# the unpacked root and the kernel version. A second run reuses the cache.
# Usage: prepareKernel.sh <cache-dir>
set -euo pipefail
mkdir -p "$1"
cd "$1"
# The versioned package that linux-image-amd64 points at; apt's lists are fetched if missing.
kernelPackage() {
    apt-cache depends linux-image-amd64 2>/dev/null |
        sed -n 's/^ *Depends: *\(linux-image-[0-9][^ ]*-amd64\)$/\1/p' | head -n1
}
pkg=$(kernelPackage)
[ -n "$pkg" ] || { apt-get update -qq >&2; pkg=$(kernelPackage); }
[ -n "$pkg" ] || { echo "no linux-image-*-amd64 package known to apt (run apt-get update)" >&2; exit 1; }
version=${pkg#linux-image-}
root=$PWD/root-$version
if [ ! -f "$root/.complete" ]; then
    rm -rf "$root"
    ls ./"$pkg"_*.deb >/dev/null 2>&1 || apt-get download "$pkg" >&2
    mkdir -p "$root"
    # Only what the guest needs: unpacking the whole module tree takes far longer.
    dpkg-deb --fsys-tarfile ./"$pkg"_*.deb | tar -x -C "$root" --wildcards \
        './boot/vmlinuz-*' './lib/modules/*/kernel/drivers/char/ipmi/*' \
        './lib/modules/*/modules.builtin*' './lib/modules/*/modules.order'
    depmod -b "$root" "$version"
    touch "$root/.complete"
fi
echo "$root $version"
