#!/usr/bin/env bash
# The main job, the whole road: zuvCli asks the simulated ZUV service, a user of the core
# library, to send test event 708 and to save the inventory. The service sends the event as
# every event of a service goes: platform services built over the host's SMBIOS image, the
# message header, the in-band manager's queue, the IPMI service in 60-byte blocks, the RMC; the
# RMC is the simulated one behind the IPMI device seam, in the service's process. zuvCli prints
# the delivery's real outcome. Then the demo shows what the RMC received, its doorbells, the
# inventory and the log lines of each subsystem on the road.
#
# Everything runs in a private mount namespace whose root is a tmpfs with the machine's
# directories bound back in, and /opt, /run (so /var/run), /var/log, /tmp, /scratch, /vmfs
# private and /dev/log masked: the SMBIOS image lies at the product's fixed path there, and
# nothing reaches the machine's files or its syslog.
# Usage: sim/service/demo.sh [build-dir]   (the build dir must not lie under /opt, /run or /tmp)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "${1:-build}" && pwd)
exec unshare -m --propagation private bash -s "$build" "$here" <<'SANDBOX'
set -euo pipefail
build=$1 here=$2
mount -t tmpfs zuvdemo /tmp
root=/tmp/root
mkdir "$root"
for entry in /*; do
    name=${entry#/}
    case $name in tmp | opt | run | scratch | vmfs | dev) continue ;; esac
    if [ -L "$entry" ]; then
        ln -s "$(readlink "$entry")" "$root/$name"
    elif [ -d "$entry" ]; then
        mkdir "$root/$name"
        mount --rbind "$entry" "$root/$name"
    fi
done
mkdir -p "$root"/{tmp,opt,run,scratch,dev} "$root/vmfs/devices/char/mem"
chmod 1777 "$root/tmp"
mount -t tmpfs zuvdemo "$root/var/log"
mount --rbind /dev "$root/dev"
[ -S /dev/log ] && mount --bind /dev/null "$root/dev/log"
export PATH="$build/client:$build/sim/service:$build/sim/smbios:$here/../hosttools:$PATH"
exec chroot "$root" sh "$here/demoRoad.sh" sim
SANDBOX
