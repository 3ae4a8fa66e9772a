#!/usr/bin/env bash
# Installs a build tree's product into a scratch prefix in it, builds and runs a program outside the
# project against it (find_package, pkg-config), checks the man page, makes the Debian package, lints
# it, installs and removes it in a private copy-on-write /usr, /etc, /var. Usage: run.sh <build-dir>
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$1" && pwd)
work=$build/install-check
prefix=$work/prefix
rm -rf "$work" "$build/packages" && mkdir -p "$work"
fail() { echo "install check: $*" >&2 && exit 1; }
# Inside a private mount namespace: tmpfs over /opt with the configuration's directory, syslog masked.
private_opt='mount -t tmpfs zuvinstall /opt && mkdir -p /opt/kelzuv/vital && { [ ! -S /dev/log ] || mount --bind /dev/null /dev/log; }'
sandboxed() { unshare -m --propagation private sh -c "$private_opt"' && exec "$@"' sh "$@"; }

cmake --install "$build" --prefix "$prefix" >/dev/null
[ "$(ls "$prefix/bin")" = zuvCli ] || fail "bin/ holds $(ls "$prefix/bin")"
[ -f "$prefix/include/zuv/ipmi/zuvIPMIService.h" ] || fail "headers are not under include/zuv/<subsystem>"
libdir=$(dirname "$(find "$prefix" -name libzuv_tables.a)")
[ "$(find "$prefix" -name '*.a' | wc -l)" = 9 ] || fail "not one archive per subsystem"

cmake -S "$here/consumer" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/cmake" >/dev/null
# shellcheck disable=SC2046
c++ -std=c++17 -Wall -Werror "$here/consumer/consumer.cpp" -o "$work/consumer" \
    $(PKG_CONFIG_PATH=$libdir/pkgconfig pkg-config --cflags --libs zuv)
expected=$'mode full interval 7\nread 1 tag 9 type 0x0102 payload 708'
for program in "$work/cmake/consumer" "$work/consumer"; do
    printed=$(sandboxed "$program") || fail "$program failed"
    [ "$printed" = "$expected" ] || fail "$program printed: $printed"
    # Every process that links the tables builds them before main: the whole archive is linked.
    nm "$program" | grep -q ' statusNames$' || fail "$program left the tables out"
done

page=$prefix/share/man/man1/zuvCli.1.gz
warnings=$(zcat "$page" | groff -man -ww -z 2>&1) && [ -z "$warnings" ] || fail "the man page: $warnings"
text=$(MANWIDTH=120 man -l "$page" 2>/dev/null)
for option in "-t, --test-event" "-l, --physical-location" "-p, --json-packet" "-f, --json-file" \
    "-j, --json-inventory" "-h, --help"; do
    grep -qF -- "$option" <<<"$text" || fail "the man page lacks $option"
done
statuses=$(sed -n '/^EXIT STATUS/,/^FILES/s/^ \{7\}\([0-9][0-9]*\) .*/\1/p' <<<"$text" | tr '\n' ' ')
[ "$statuses" = "0 1 246 245 " ] || fail "the man page's exit statuses: $statuses"

(cd "$build" && cpack -G DEB >/dev/null)
deb=$(echo "$build"/packages/zuv_*.deb)
dpkg-deb -f "$deb" Depends | grep -q libjsoncpp || fail "the package does not depend on jsoncpp"
lint=$(lintian --fail-on error,warning "$deb" 2>&1) || fail "lintian: $lint"

unshare -m --propagation private bash -s "$deb" "$work/root" "$private_opt" <<'PRIVATE' || fail "the package did not install, run and remove"
set -euo pipefail
for dir in /usr /etc /var; do
    mkdir -p "$2$dir/upper" "$2$dir/work"
    mount -t overlay zuvdeb -o "lowerdir=$dir,upperdir=$2$dir/upper,workdir=$2$dir/work" "$dir"
done
eval "$3"
dpkg -i "$1" >/dev/null
[ -x "$2/usr/upper/bin/zuvCli" ]
echo '{"CliMode": "test"}' >/opt/kelzuv/vital/zuv.conf
[ "$(/usr/bin/zuvCli -h | tail -1)" = "zuvCli [-t|--test-event eventid] [-h|--help] [-j|--json-inventory filename]" ]
dpkg -r zuv >/dev/null
! dpkg -s zuv >/dev/null 2>&1
PRIVATE
left=$(find "$work"/root/*/upper -iname '*zuv*')
[ -z "$left" ] || fail "dpkg -r left behind: $left"
echo "install check passed: prefix, find_package and pkg-config consumers, man page, package"
