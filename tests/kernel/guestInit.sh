#!/bin/sh
# /init of the test guest: a bare busybox system with the IPMI modules on disk but none loaded,
# the product's configuration in place, then the test program; the console carries the results.
/bin/busybox --install -s /bin
export PATH=/bin:/sbin
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs devtmpfs /dev
mkdir -p /tmp /var/run /var/log /opt/kelzuv/vital
mount -t tmpfs tmpfs /tmp
echo '{"ZUVLogLocation":"terminal","DebugLogLocation":"terminal","EnableDebugLog":false,"LoggingLevel":"Info"}' \
    > /opt/kelzuv/vital/zuv.conf

echo "ZUVK BEGIN mode=${zuvmode}"
if [ "$zuvmode" = bmc-sim ]; then
    # Without the module tree the driver-loading commands find nothing: the driver never
    # creates the device.
    mv /lib/modules /lib/modules.hidden
    /zuvKernelGuest --gtest_color=no --gtest_filter='MissingDevice.*'
    status=$?
    mv /lib/modules.hidden /lib/modules
    echo "ZUVK EXIT nodriver $status"
fi

/zuvKernelGuest --gtest_color=no --gtest_filter="${zuvfilter}"
echo "ZUVK EXIT main $?"
/zuvKernelGuest --measure "$zuvmode"
poweroff -f
