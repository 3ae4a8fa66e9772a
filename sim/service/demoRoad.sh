#!/bin/sh
# The road of the demos, run where the product's fixed paths are private (demo.sh's private
# root, or the guest of kernelDemo.sh): the configuration, the host's SMBIOS image and the
# answer of its version tool; the simulated service on the library's road to an RMC; zuvCli's
# test event and inventory; then the service's report, the inventory and the log lines of each
# subsystem on the road. zuvCli, zuvSimService, zuvSmbiosImageTool and the host tools' stand-in
# fakeHostTool come from PATH.
# Usage: demoRoad.sh sim|device   (the RMC in the service's process behind the IPMI device
#                                  seam, or behind the host's /dev/ipmi0)
set -eu
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
zuvSmbiosImageTool /vmfs/devices/char/mem/smbios
export ZUV_FAKE_DIR=/tmp/zuvfake
mkdir -p /tmp/zuvfake/localcli /tmp/zuvfake/bin
printf '   Product: VMware ESXi\n   Version: 8.0.3\n' > /tmp/zuvfake/localcli/system_version_get.out
ln -sf "$(command -v fakeHostTool)" /tmp/zuvfake/bin/localcli  # the stand-in answers as the tool it is named
export PATH="/tmp/zuvfake/bin:$PATH"

cd /tmp
zuvSimService --rmc "$1" --rmc-report /tmp/rmc.txt &
service=$!
trap 'kill "$service" 2>/dev/null || true' EXIT
while [ ! -p /var/run/kelzuv ]; do
    kill -0 "$service"
    sleep 0.05
done
echo '$ zuvCli -t 708 -l ABCDEFGHIJKLMNOP'
zuvCli -t 708 -l ABCDEFGHIJKLMNOP
echo '$ zuvCli -j inv.json'
zuvCli -j inv.json
kill "$service"
if [ "$1" = sim ]; then
    echo "--- what the RMC received (command, blocks, the argument put together) and its doorbells:"
else
    echo "--- the RMC's doorbells, as the service polled them through /dev/ipmi0:"
fi
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
