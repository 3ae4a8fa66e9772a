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
hosttools=$(cd "$(dirname "$0")/../hosttools" && pwd)
build=$(cd "${1:-build}" && pwd)
exec unshare -m --propagation private bash -s "$build" "$hosttools" <<'SANDBOX'
set -euo pipefail
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
exec chroot "$root" bash -s "$@" <<'DEMO'
set -euo pipefail
build=$1
mkdir -p /opt/kelzuv/vital
cat > /opt/kelzuv/vital/zuv.conf <<'CONF'
{
    "CliMode": "test",
    "EnableResources": ["All"],
    "ZUVLogLocation": "/opt/kelzuv/log/zuv.log",
    "DebugLogLocation": "/opt/kelzuv/log/zuv-debug.log",
    "EnableDebugLog": true,
    "LoggingLevel": "Info"
}
CONF
"$build/sim/smbios/zuvSmbiosImageTool" /vmfs/devices/char/mem/smbios
# The host's version tool, answered by the stand-in of sim/hosttools.
export PATH="$2:$PATH" ZUV_FAKE_DIR=/tmp/zuvfake
mkdir -p /tmp/zuvfake/localcli
printf '   Product: VMware ESXi\n   Version: 8.0.3\n' > /tmp/zuvfake/localcli/system_version_get.out

cd /tmp
"$build/sim/service/zuvSimService" --rmc sim --rmc-report /tmp/rmc.txt &
service=$!
while [ ! -p /var/run/kelzuv ]; do sleep 0.05; done
echo '$ zuvCli -t 708 -l ABCDEFGHIJKLMNOP'
"$build/client/zuvCli" -t 708 -l ABCDEFGHIJKLMNOP
echo '$ zuvCli -j inv.json'
"$build/client/zuvCli" -j inv.json
kill "$service"
echo "--- what the RMC received (command, blocks, the argument put together) and its doorbells:"
cat /tmp/rmc.txt
echo "--- inv.json, from the library's reading of the SMBIOS image:"
cat /tmp/inv.json
echo "--- the debug log, subsystem by subsystem along the road (zuvCli's lines and the service's):"
for tag in ZUV_MSGINFRA ZUV_UTILS ZUV_PLATFORM_SERVICE_BUILDER ZUV_COM_MANAGER P_DISPATCH_Q ZUV_IPMI_SERVICE; do
    echo "[$tag]"
    grep " $tag: " /opt/kelzuv/log/zuv-debug.log || true
done
echo "--- the main log:"
cat /opt/kelzuv/log/zuv.log
DEMO
SANDBOX
