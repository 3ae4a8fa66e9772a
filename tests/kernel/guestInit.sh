#!/bin/sh
# /init of the test guest: a bare busybox system with the IPMI modules on disk but none loaded,
# and a plain tmpfs on /dev, where the kernel makes no node: /dev/ipmi0 can only come from the
# product's own mknod. The console carries the results.
/bin/busybox --install -s /bin
export PATH=/bin:/sbin
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t tmpfs -o mode=0755 tmpfs /dev
mknod -m 0666 /dev/null c 1 3
mknod -m 0600 /dev/console c 5 1
mkdir -p /tmp /var/run /var/log /opt/kelzuv/vital /vmfs/devices/char/mem
mount -t tmpfs tmpfs /tmp
# The SMBIOS device of an ESXi host gives the entry point with the structure table behind it.
cat /sys/firmware/dmi/tables/smbios_entry_point /sys/firmware/dmi/tables/DMI >/vmfs/devices/char/mem/smbios
echo '{"ZUVLogLocation":"terminal","DebugLogLocation":"terminal","EnableDebugLog":false,"LoggingLevel":"Info"}' \
    >/opt/kelzuv/vital/zuv.conf

echo "ZUVK BEGIN mode=${zuvmode}"
if [ "$zuvmode" = demo ]; then
    # Instead of the tests, the road of sim/service/kernelDemo.sh, which brings its own
    # configuration and SMBIOS image.
    demoRoad.sh device
    echo "ZUVK EXIT demo $?"
    poweroff -f
fi
zuvKernelGuest --gtest_color=no --gtest_brief=1 --gtest_shuffle --gtest_filter="${zuvfilter}"
echo "ZUVK EXIT main $?"
poweroff -f
