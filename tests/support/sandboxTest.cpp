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
    EXPECT_TRUE(zuvtest::fileExists("/bin/sh"));
    zuvtest::SyslogCollector syslogLines;
    // More lines than the kernel queues for an unread datagram socket: none may block or be lost.
    for (int i = 0; i < 50; ++i) zuvSyslog(i % 2 ? LOG_ERR : LOG_WARNING, "line %d", i);
    const auto lines = syslogLines.lines();
    ASSERT_EQ(lines.size(), 50u);
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(lines[i].ident + ":" + std::to_string(lines[i].facility | lines[i].priority) + ":" + lines[i].message,
                  "zuv:" + std::to_string(LOG_USER | (i % 2 ? LOG_ERR : LOG_WARNING)) + ":line " + std::to_string(i));
}

}  // namespace
