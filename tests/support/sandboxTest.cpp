#include "zuvSandbox.h"

#include "config/zuvSyslog.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace {

std::string mountOf(const std::string& mountPoint) {
    std::ifstream mounts("/proc/self/mounts");
    std::string device, point, type, line, found;
    while (std::getline(mounts, line)) {
        std::istringstream fields(line);
        fields >> device >> point >> type;
        if (point == mountPoint) found = type;  // the last mount on a point is the visible one
    }
    return found;
}

TEST(Sandbox, ProductPathsArePrivateTmpfs) {
    ASSERT_TRUE(zuvtest::inSandbox());
    // /opt, /run, /tmp, /scratch and /vmfs are plain directories of the tmpfs root; /var and /dev
    // are tmpfs of their own with the machine's entries bound in.
    for (const char* path : {"/", "/var", "/dev"}) EXPECT_EQ(mountOf(path), "tmpfs") << path;
    for (const char* path : {"/opt", "/run", "/tmp", "/scratch", "/vmfs"}) EXPECT_EQ(mountOf(path), "") << path;
    zuvtest::writeConfig("{\"a\":1,\"b\":2}");
    EXPECT_EQ(zuvtest::readFile("/opt/kelzuv/vital/zuv.conf"), "{\"a\":1,\"b\":2}");
    zuvtest::writeFile("/var/run/kelzuv.probe", "x");
    EXPECT_TRUE(zuvtest::fileExists("/run/kelzuv.probe"));
    zuvtest::writeFile("/bin/vim-cmd", "#!/bin/sh\n");
    EXPECT_TRUE(zuvtest::fileExists("/bin/sh"));
    EXPECT_FALSE(zuvtest::fileExists("/usr/bin/vim-cmd"));
}

TEST(Sandbox, SyslogCollectorSeesEveryLineWithItsPriority) {
    zuvtest::SyslogCollector syslogLines;
    // More lines than the kernel queues for an unread datagram socket: none may block or be lost.
    for (int i = 0; i < 50; ++i) zuvSyslog(i % 2 ? LOG_ERR : LOG_WARNING, "line %d", i);
    const auto lines = syslogLines.lines();
    ASSERT_EQ(lines.size(), 50u);
    EXPECT_EQ(lines[0].message, "line 0");
    EXPECT_EQ(lines[0].priority, LOG_WARNING);
    EXPECT_EQ(lines[1].priority, LOG_ERR);
    EXPECT_EQ(lines[49].ident, "zuv");
    EXPECT_EQ(lines[49].facility, LOG_USER);
}

}  // namespace
