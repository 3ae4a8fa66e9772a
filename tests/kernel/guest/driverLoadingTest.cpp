// The guest boots with no IPMI module loaded and a plain tmpfs on /dev, where the kernel makes
// no device node: the service's first open fails, its own modprobe and mknod lines run for
// real, and the second open finds the node that its mknod made during the first construction.
#include "guestSupport.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

TEST(DriverLoading, FirstUseLoadsAllFiveDriversAndMakesTheNode) {
    const zuvkernel::FirstOpen& open = zuvkernel::firstOpen();
    ASSERT_NE(std::string::npos, zuvtest::readFile("/proc/mounts").find("tmpfs /dev tmpfs"));
    EXPECT_TRUE(open.modulesBefore.empty());
    EXPECT_FALSE(open.nodeBefore);
    EXPECT_GE(open.seconds, 3.0);  // the pause after the driver load, on the guest's clock
    // Every modprobe line took effect; ipmi_poweroff, which nothing asks for, stays out.
    const std::set<std::string> loaded{"ipmi_devintf", "ipmi_msghandler", "ipmi_si", "ipmi_ssif", "ipmi_watchdog"};
    EXPECT_EQ(loaded, open.modulesAfter);

    struct stat node {};
    ASSERT_EQ(0, stat("/dev/ipmi0", &node));
    EXPECT_EQ(S_IFCHR | 0600u, node.st_mode);
    const std::string major = std::to_string(major(node.st_rdev));
    EXPECT_NE(std::string::npos, zuvtest::readFile("/proc/devices").find("\n" + major + " ipmidev\n")) << major;
    EXPECT_EQ(0u, minor(node.st_rdev));
}
