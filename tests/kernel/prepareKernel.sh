#!/usr/bin/env bash
# Fetches Debian's current amd64 kernel package (without installing it), unpacks it into the
# cache directory and prints the unpacked root. A second run reuses the cache.
# Usage: prepareKernel.sh <cache-dir>
set -euo pipefail
cache=$1
mkdir -p "$cache"
cd "$cache"

# The versioned package that the linux-image-amd64 meta package points at.
pkg=$(apt-cache depends linux-image-amd64 2>/dev/null | sed -n 's/^ *Depends: *\(linux-image-[0-9][^ ]*-amd64\)$/\1/p' | head -n1)
if [ -z "$pkg" ]; then
    echo "no linux-image-*-amd64 package known to apt (run apt-get update)" >&2
    exit 1
fi
version=${pkg#linux-image-}
root=$cache/root-$version
if [ ! -f "$root/.complete" ]; then
    rm -rf "$root"
    ls ./"$pkg"_*.deb >/dev/null 2>&1 || apt-get download "$pkg" >&2
    mkdir -p "$root"
    dpkg -x ./"$pkg"_*.deb "$root"
    depmod -b "$root" "$version"
    touch "$root/.complete"
fi
echo "$root $version"
