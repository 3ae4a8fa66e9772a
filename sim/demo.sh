#!/usr/bin/env bash
# The main job on an embedded default: the simulated ZUV service and zuvCli in a private mount
# namespace (tmpfs over /opt, /run and /tmp), with a default configuration written there.
# Usage: sim/demo.sh [build-dir]   (the build dir must not lie under /opt, /run or /tmp)
set -euo pipefail
build=$(cd "${1:-build}" && pwd)
exec unshare -m --propagation private bash -s "$build" <<'SANDBOX'
set -euo pipefail
build=$1
for dir in /opt /run /tmp; do mount -t tmpfs zuvdemo "$dir"; done
mkdir -p /opt/kelzuv/vital
cat > /opt/kelzuv/vital/zuv.conf <<'CONF'
{
    "CliMode": "test",
    "EnableResources": ["All"],
    "ZUVLogLocation": "/opt/kelzuv/log/zuv.log",
    "LoggingLevel": "Info"
}
CONF
"$build/sim/service/zuvSimService" --record /tmp/received.txt &
service=$!
while [ ! -p /var/run/kelzuv ]; do sleep 0.05; done
cd /tmp
echo '$ zuvCli -t 708'
"$build/client/zuvCli" -t 708
echo '$ zuvCli -j inv.json'
"$build/client/zuvCli" -j inv.json
kill "$service"
echo "The simulated service received (17 bytes of meta data, then the payload):"
cat /tmp/received.txt
SANDBOX
