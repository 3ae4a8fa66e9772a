// What keeps a test off the machine: the product's paths are private, and syslog lines are all collected.
#include "zuvSandbox.h"

#include "config/zuvSyslog.h"

#include <gtest/gtest.h>

#include <linux/magic.h>
#include <sys/vfs.h>

namespace {

TEST(Sandbox, ProductPathsArePrivateAndSyslogNeverBlocks) {
    for (const char* path : {"/opt", "/run", "/var/run/", "/var/log", "/tmp", "/scratch", "/vmfs", "/dev", "/bin"}) {
        struct statfs fs {};
        EXPECT_TRUE(statfs(path, &fs) == 0 && fs.f_type == TMPFS_MAGIC) << path;
    }
    zuvtest::SyslogCollector syslogLines;
    // More lines than the kernel queues for an unread datagram socket: none may block or be lost.
    for (int i = 0; i < 50; ++i) zuvSyslog(LOG_WARNING, "line %d", i);
    const auto lines = syslogLines.lines();
    ASSERT_EQ(lines.size(), 50u);
    for (int i = 0; i < 50; ++i) EXPECT_EQ(lines[i].message, "line " + std::to_string(i));
}

}  // namespace
