#!/usr/bin/env bash
# Injected faults on the files the library writes: strace fails each call of zuvFaultDriver on a
# scenario's files in turn (EIO, ENOSPC, EACCES) or kills it there, then the state and log files
# meet a full filesystem; check() says what each run must leave. All of it in a private mount
# namespace, tmpfs over /opt, /tmp, /run and /var/log, /dev/log hidden.   run.sh <zuvFaultDriver>
set -euo pipefail
[ -n "${ZUV_FAULTS_PRIVATE:-}" ] || exec unshare -m --propagation private env ZUV_FAULTS_PRIVATE=1 \
    bash "$0" "$(realpath "$1")"
driver=$1
for dir in /opt /tmp /run /var/log; do mount -t tmpfs zuvfaults "$dir"; done
[ ! -e /dev/log ] || mount --bind /dev/null /dev/log
vital=/opt/kelzuv/vital tmpdir=/opt/kelzuv/tmp logdir=/opt/kelzuv/log
state=$vital/kelZUVStartStop.txt twin=$vital/kelZUVStartStoptmp.txt
printf '2020-03-04T05:06:07Z Host has booted\n2021-01-02T03:04:05Z Host has booted\n' >/var/log/vmksummary.log
# The host tools: the one stand-in of sim/hosttools under each tool's name, its answers in /run/zuvfake.
export ZUV_FAKE_DIR=/run/zuvfake PATH=/run/zuvfake/bin:$PATH
mkdir -p $ZUV_FAKE_DIR/{bin,localcli,esxtop}
standIn=$(realpath "$(dirname "$0")/../../sim/hosttools/fakeHostTool")
for tool in localcli esxtop; do ln -s "$standIn" $ZUV_FAKE_DIR/bin/$tool; done
printf '   Address: 0000:03:00.0\n   VMkernel Name: vmhba1\n' >$ZUV_FAKE_DIR/localcli/hardware_pci_list.out
printf 'Adapter: vmhba1\n   Node Name: 20:00:00:00:c9:00:00:01\n' >$ZUV_FAKE_DIR/localcli/storage_san_fc_list.out
printf '%s\n%s' '"Time","\\h\Memory\Machine MBytes","\\h\Memory\Free MBytes",' '"1","262144","131072",' \
    >$ZUV_FAKE_DIR/esxtop/-c__opt_kelzuv_data_esxtopconf_-b_-n_1.out
runs=0 failures=0
fault() { failures=$((failures + 1)) && echo "FAULT $*"; }
traced() { strace -qq $(printf -- '-P %s ' ${files[$1]}) "${@:2}" "$driver" "$1"; } # $1 operation, strace options

reset() {
    rm -rf /opt/kelzuv /tmp/zuvboot.log && mkdir -p $vital $tmpdir $logdir /opt/kelzuv/data
    printf 'current_start 100\nlast_start 200\nlast_stop 300\n' >$state
    printf 'old log line\n' | tee $logdir/zuv.log >$logdir/zuvdebug.log
    printf '{"ZUVLogLocation": "%s/zuv.log", "DebugLogLocation": "%s/zuvdebug.log", "EnableDebugLog": true}' \
        $logdir $logdir >$vital/zuv.conf
}

# A scenario's files, its good output (first) and failed ones (time stamps as T; a read error on a
# scratch file reads as its end, so nothing is found) and the state file's new content ('|' ends a line).
declare -A files=([state-init]="$state $twin" [state-stop]="$state $twin" [last-start]="$state $twin"
    [boot-times]=/tmp/zuvboot.log [fc]="$tmpdir/fc_topology.txt $tmpdir/fc_name.txt" [memory]=$tmpdir/zuv-mem.txt
    [log]="$logdir/zuv.log $logdir/zuvdebug.log $tmpdir/zuv.log $tmpdir/zuvdebug.log")
declare -A outputs=([boot-times]="0 T T|-1 0 0|0 0 0|" [memory]="256 128 ||0 0 |"
    [fc]="0000:03:00.0 vmhba1|NotAvailable NotAvailable|0000:03:00.0 NotAvailable|")
declare -A newState=([state-init]="current_start T|last_start 200|last_stop 300|"
    [state-stop]="last_start T|last_stop T|current_start 0|"
    [last-start]="current_start 100|last_start 100|last_stop 300|")
old="current_start 100|last_start 200|last_stop 300|"
stamps() { sed -E 's/[0-9]{9,}/T/g' "$@" | tr '\n' '|'; }

# Checks what one run of $1 left; $2 is its exit status, $3 its output, $4 what was injected.
# After a kill or a failed unlink a twin or scratch file may stay, and the output is not judged:
# a run without a fault follows, which must clear what is left.
check() {
    local op=$1 status=$2 out why= cut= now
    out=$(printf '%s' "$3" | stamps)
    now=$([ -f $state ] && stamps $state || echo missing)
    [[ $status = 137 || $4 = unlink:error* ]] && cut=1
    [[ $status = 0 || $status = 137 ]] || why="exit status $status"
    if [ -n "${newState[$op]:-}" ]; then
        [ "$now" = "$old" ] || [ "$now" = "${newState[$op]}" ] || why="state file [$now]"
        [ -n "$cut" ] || [ ! -e $twin ] || why="twin left"
    elif [ "$op" = log ]; then
        [ "$(head -n1 $logdir/zuv.log)" = "old log line" ] || why="log lost its content"
    elif [ -z "$cut" ]; then
        [[ "|${outputs[$op]}" == *"|$out|"* ]] || why="output [$out]"
        [ "$4" != none ] || [ "$out" = "${outputs[$op]%%|*}" ] || why="output [$out] with nothing injected"
        for f in ${files[$op]}; do [ ! -e "$f" ] || why="$f left"; done
    fi
    runs=$((runs + 1))
    [ -z "$why" ] || fault "$op, $4: $why"
    [ -z "$cut" ] || run "$op" none
}

run() { # $1 operation, $2 strace injection or "none"
    local out status=0
    out=$(if [ "$2" = none ]; then "$driver" "$1"; else traced "$1" -o /dev/null -e inject="$2"; fi 2>/dev/null) ||
        status=$?
    check "$1" $status "$out" "$2"
}

calls=openat,read,write,fsync,close,rename,unlink,mkdir,symlink
for op in state-init state-stop last-start boot-times fc memory log; do
    reset
    trace=$(traced $op -o /dev/stdout -e trace=$calls | sed -n 's/^\([a-z0-9]*\)(.*/\1/p')
    [ -n "$trace" ] || fault "$op: no traced call"
    declare -A seen=()
    for call in $trace; do
        seen[$call]=$((${seen[$call]:-0} + 1))
        for fault in error=EIO error=ENOSPC error=EACCES signal=KILL; do
            reset && run $op "$call:$fault:when=${seen[$call]}"
        done
    done
    echo "faults: $op: $(echo $trace | wc -w) calls on its files, each failed three ways and killed"
done

# A full filesystem under the state file and under the logs.
for target in {$vital,$logdir}/{state-init,state-stop,last-start,log}; do
    dir=${target%/*} op=${target##*/}
    reset && cp -a $dir /tmp/full && mount -t tmpfs -o size=8k zuvfull $dir && cp -a /tmp/full/. $dir
    head -c 1M /dev/zero >$dir/filler 2>/dev/null || true
    run $op none
    umount $dir && rm -rf /tmp/full
done
echo "faults: $runs runs, $failures faults"
[ $failures = 0 ]
