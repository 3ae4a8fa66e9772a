#!/usr/bin/env bash
# Installs the Debian packages listed in .ci/packages.txt that are not installed yet.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
missing=()
while read -r pkg; do
    pkg=${pkg%%#*}
    pkg=$(echo "$pkg" | tr -d '[:space:]')
    [ -n "$pkg" ] || continue
    dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed' || missing+=("$pkg")
done < "$root/.ci/packages.txt"
if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    apt-get update -qq
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
