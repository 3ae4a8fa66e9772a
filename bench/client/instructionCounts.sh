#!/usr/bin/env bash
# Instructions per request, a steady figure where wall times are noisy: each floor client and
# "zuvCli -t 708" under callgrind, against the simulated service, in a private mount namespace
# (tmpfs over /opt, /run and /tmp; the machine's /dev/log masked).
# Usage: bench/client/instructionCounts.sh [build-dir]
set -euo pipefail
build=$(cd "${1:-build}" && pwd)
exec unshare -m --propagation private bash -s "$build" <<'SANDBOX'
set -euo pipefail
build=$1
for dir in /opt /run /var/run /tmp; do
    [ -d "$dir" ] && [ ! -L "$dir" ] && mount -t tmpfs zuvbench "$dir"
done
[ -S /dev/log ] && mount --bind /dev/null /dev/log
mkdir -p /opt/kelzuv/vital
echo '{"CliMode":"test","LoggingLevel":"Warning"}' > /opt/kelzuv/vital/zuv.conf
cd /tmp
"$build/sim/service/zuvSimService" > /dev/null &
service=$!
while [ ! -p /var/run/kelzuv ]; do sleep 0.05; done
count() {
    valgrind --tool=callgrind --callgrind-out-file=/tmp/cg.out "$@" > /dev/null 2> /tmp/cg.log
    awk '/^summary:/ { print $2 }' /tmp/cg.out
}
printf '%-8s %14s\n' client instructions
printf '%-8s %14s\n' c "$(count "$build/bench/client/zuv_floor_client_c" 708)"
printf '%-8s %14s\n' cxx "$(count "$build/bench/client/zuv_floor_client_cxx" 708)"
printf '%-8s %14s\n' zuvCli "$(count "$build/client/zuvCli" -t 708)"
kill "$service"
SANDBOX
