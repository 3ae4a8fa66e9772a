#!/usr/bin/env bash
# The main job on an embedded default: the simulated ZUV service and zuvCli in a private mount
# namespace (tmpfs over /opt, /run, /tmp and /scratch; the machine's /dev/log masked), with a
# default configuration written there. Nothing reaches the machine's files or its syslog.
# Usage: sim/service/demo.sh [build-dir]   (the build dir must not lie under /opt, /run or /tmp)
set -euo pipefail
build=$(cd "${1:-build}" && pwd)
exec unshare -m --propagation private bash -s "$build" <<'SANDBOX'
set -euo pipefail
build=$1
for dir in /opt /run /var/run /tmp /scratch; do
    [ -d "$dir" ] && [ ! -L "$dir" ] && mount -t tmpfs zuvdemo "$dir"
done
[ -S /dev/log ] && mount --bind /dev/null /dev/log
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
cd /tmp
"$build/sim/service/zuvSimService" --record /tmp/received.txt \
    --inventory-json '{"Inventory":{"Source":"zuvSimService"}}' &
service=$!
while [ ! -p /var/run/kelzuv ]; do sleep 0.05; done
echo '$ zuvCli -t 708'
"$build/client/zuvCli" -t 708
echo '$ zuvCli -j inv.json'
"$build/client/zuvCli" -j inv.json
kill "$service"
echo "--- inv.json as the simulated service wrote it:"
cat /tmp/inv.json; echo
echo "--- what the simulated service received (17 bytes of meta data, then the payload, in hex):"
cat /tmp/received.txt
echo "--- the debug log: the pipe channel's lines of the service and of both zuvCli runs"
cat /opt/kelzuv/log/zuv-debug.log
SANDBOX
