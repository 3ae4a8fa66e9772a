// The start-stop state file: its rewrites at service init and shutdown, the boot decision,
// updateLastStart, and what failures of the rewrite leave behind.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <fstream>
#include <stdexcept>

#include "fakeHostSystem.h"
#include "sim/hosttools/zuvFakeHostTools.h"
#include "vmware/zuvVMwareOSUtils.h"
#include "vmwareTestLog.h"
#include "zuvSandbox.h"

namespace {

constexpr const char* kVital = "/opt/kelzuv/vital";
constexpr const char* kState = "/opt/kelzuv/vital/kelZUVStartStop.txt";
constexpr const char* kTemporary = "/opt/kelzuv/vital/kelZUVStartStoptmp.txt";

using vmwaretest::hasMessage;

std::string n(int64_t value) { return std::to_string(value); }

class BootTrackingTest : public ::testing::Test {
protected:
    void SetUp() override {
        vmwaretest::startLogging();
        vmwaretest::clearLogs();
        zuvtest::makeDirectories(kVital);
        unlink(kState);
        rmdir(kTemporary);
        unlink(kTemporary);
        start = os.getServiceStartTime();
    }
    std::string state() { return zuvtest::readFile(kState); }

    // Runs the decision on a file with last_start S and last_stop P and a boot at B.
    std::pair<bool, bool> decide(int64_t s, int64_t p, int64_t b, bool graceful = false, bool nonGraceful = false) {
        zuvtest::writeFile(kState, "current_start " + n(start) + "\nlast_start " + n(s) + "\nlast_stop " + n(p) + "\n");
        host.uptime = static_cast<long>(start - b);
        os.genOSBootLogic(&graceful, &nonGraceful);
        return {graceful, nonGraceful};
    }

    vmwaretest::FakeHostSystem host;
    zuvVMwareOSUtils os;
    int64_t start = 0;
};

TEST_F(BootTrackingTest, ServiceStartTimeIsFixedAtFirstCallAndBootTimeSubtractsUptime) {
    const int64_t now = time(nullptr);
    EXPECT_LE(start, now);
    EXPECT_EQ(os.getServiceStartTime(), start);
    EXPECT_EQ(zuvVMwareOSUtils().getServiceStartTime(), start);
    host.uptime = 3600;
    EXPECT_EQ(os.getSystemBootTime(), start - 3600);
    host.sysinfoError = EIO;
    EXPECT_EQ(os.getSystemBootTime(), start - 1);
    EXPECT_TRUE(hasMessage(vmwaretest::debugMessages(),
                           "Unable to fetch system Up Time using sysinfo API - -1, 5 : Input/output error"));
}

TEST_F(BootTrackingTest, ReadsWholeTokensInAnyOrderWithStrtolValues) {
    struct Case {
        const char* content;
        const char* key;
        int64_t expected;
    };
    const Case cases[] = {
        {"last_stop 30\n\n\nlast_start 20\ncurrent_start 10\n", "last_start", 20},
        {"last_stop 30\n\n\nlast_start 20\ncurrent_start 10\n", "current_start", 10},
        {"last_start 1700000000123\n", "last_start", 1700000000123},
        {"last_start 123abc\n", "last_start", 123},
        {"last_start 42.9\n", "last_start", 42},
        {"last_start abc\nlast_stop 5\n", "last_start", 0},
        {"last_start -17\n", "last_start", -17},
        {"last_start\n", "last_start", 0},
        {"last_start", "last_start", 0},
        {"last_start\n\n  99\n", "last_start", 99},  // the value is the next token, wherever it stands
        {"xlast_start 5\nlast_start_old 6\nlast_start 7\n", "last_start", 7},
        {"last_start 1\nlast_start 2\n", "last_start", 1},
        {"last_stop 30\n", "last_start", 0},
        {"", "last_stop", 0},
        {"current_start 5 last_stop 8", "last_stop", 8},
        {"last_start 5\r\n", "last_start", 5},
    };
    for (const Case& c : cases) {
        zuvtest::writeFile(kState, c.content);
        EXPECT_EQ(os.readStartStopValue(c.key), c.expected) << c.content << " / " << c.key;
    }
    EXPECT_TRUE(hasMessage(vmwaretest::debugMessages(), "content to match =last_start"));
    EXPECT_TRUE(hasMessage(vmwaretest::debugMessages(), "Found a match 1700000000123"));

    unlink(kState);
    vmwaretest::clearLogs();
    EXPECT_EQ(os.readStartStopValue("last_start"), 0);
    EXPECT_TRUE(hasMessage(vmwaretest::mainMessages(), "Error occurred in opening zuv startup file"));
}

TEST_F(BootTrackingTest, FreshHostLifecycleCreatesMovesAndRecordsTheStop) {
    os.updateStartStopFile(0);
    EXPECT_EQ(state(), "current_start " + n(start) + "\nlast_start 0\nlast_stop 0\n");
    EXPECT_TRUE(hasMessage(vmwaretest::debugMessages(), "Successful in creating the file"));
    EXPECT_TRUE(hasMessage(vmwaretest::debugMessages(),
                           "During ZUV service init, last_start : 0, last_stop : 0, current_start : " + n(start)));

    vmwaretest::clearLogs();
    bool graceful = false, nonGraceful = false;
    os.genOSBootLogic(&graceful, &nonGraceful);
    EXPECT_FALSE(graceful);
    EXPECT_FALSE(nonGraceful);
    EXPECT_EQ(host.sleeps, std::vector<unsigned>{20});
    for (const std::string& line : vmwaretest::debugMessages())
        EXPECT_EQ(line.find("gen OS boot logic"), std::string::npos);

    os.updateLastStart();
    EXPECT_EQ(state(), "current_start " + n(start) + "\nlast_start " + n(start) + "\nlast_stop 0\n");

    const int64_t before = time(nullptr);
    os.updateStartStopFile(1);
    const int64_t after = time(nullptr);
    const int64_t stop = zuvVMwareOSUtils().readStartStopValue("last_stop");
    EXPECT_GE(stop, before);
    EXPECT_LE(stop, after);
    EXPECT_EQ(state(), "last_start " + n(start) + "\nlast_stop " + n(stop) + "\ncurrent_start 0\n");
    EXPECT_FALSE(zuvtest::fileExists(kTemporary));
}

TEST_F(BootTrackingTest, BootDecisionFollowsTheOrderOfStartStopAndBoot) {
    const int64_t t = start;
    struct Case {
        int64_t s, p, b;
        bool graceful, nonGraceful;
        const char* message;  // nullptr: no outcome message
    };
    const Case cases[] = {
        {0, 0, t - 10, false, false, nullptr},
        {0, t - 500, t - 10, false, false, nullptr},
        {t - 500, t - 400, t - 300, true, false, "In gen OS boot logic.Last shutdown was graceful."},
        {t - 500, t - 400, t - 400, false, false, "ZUV crashed in current boot so do nothing in point 2"},
        {t - 500, t - 400, t - 450, false, false, "ZUV crashed in current boot so do nothing in point 2"},
        {t - 400, t - 400, t - 10, false, false, nullptr},
        {t - 400, t - 500, t - 300, false, true, "In gen OS boot logic.Last shutdown was not-graceful."},
        {t - 400, t - 500, t - 400, false, false, "ZUV crashed in current boot so do nothing in point 3"},
        {t - 400, t - 500, t - 450, false, false, "ZUV crashed in current boot so do nothing in point 3"},
        {t - 400, 0, t - 300, false, true, "In gen OS boot logic.Last shutdown was not-graceful."},
        {-5, -10, t, false, true, "In gen OS boot logic.Last shutdown was not-graceful."},  // signed comparisons
    };
    const char* outcomes[] = {
        "In gen OS boot logic.Last shutdown was graceful.", "In gen OS boot logic.Last shutdown was not-graceful.",
        "ZUV crashed in current boot so do nothing in point 2", "ZUV crashed in current boot so do nothing in point 3"};
    for (const Case& c : cases) {
        vmwaretest::clearLogs();
        const auto [graceful, nonGraceful] = decide(c.s, c.p, c.b);
        const std::string label = "S=" + n(c.s - t) + " P=" + n(c.p - t) + " B=" + n(c.b - t);
        EXPECT_EQ(graceful, c.graceful) << label;
        EXPECT_EQ(nonGraceful, c.nonGraceful) << label;
        const auto lines = vmwaretest::debugMessages();
        EXPECT_TRUE(hasMessage(lines, "The current system boot time is " + n(c.b))) << label;
        for (const char* outcome : outcomes) {
            const bool expected = c.message != nullptr && std::string(c.message) == outcome;
            EXPECT_EQ(hasMessage(lines, outcome), expected) << label << ": " << outcome;
        }
    }
    // Flags are only ever set, never cleared.
    EXPECT_EQ(decide(t - 500, t - 400, t - 450, true, true), std::make_pair(true, true));
    EXPECT_EQ(decide(0, 0, t, true, false), std::make_pair(true, false));
    // No file at all: every value reads 0, so no decision.
    unlink(kState);
    bool graceful = false, nonGraceful = false;
    os.genOSBootLogic(&graceful, &nonGraceful);
    EXPECT_FALSE(graceful || nonGraceful);
    // sysinfo fails: the boot time is start - 1, and the decision still runs on it.
    host.sysinfoError = ENOSYS;
    zuvtest::writeFile(kState, "last_start " + n(t - 500) + "\nlast_stop " + n(t - 2) + "\n");
    os.genOSBootLogic(&graceful, &nonGraceful);
    EXPECT_TRUE(graceful);
}

TEST_F(BootTrackingTest, InitRewriteReplacesOnlyCurrentStartLinesAndKeepsOrder) {
    struct Case {
        std::string before, after;
    };
    const std::string cs = "current_start " + n(start);
    const Case cases[] = {
        {"last_start 5\nlast_stop 9\ncurrent_start 0\n", "last_start 5\nlast_stop 9\n" + cs + "\n"},
        {"last_stop 9\n\ncurrent_start 3\nlast_start 5", "last_stop 9\n\n" + cs + "\nlast_start 5\n"},
        {"# old current_start marker\nlast_start 5\n", cs + "\nlast_start 5\n"},  // matched anywhere in a line
        {"last_start 5\nlast_stop 9\n", "last_start 5\nlast_stop 9\n"},           // no line: none is added
        {"", ""},
    };
    for (const Case& c : cases) {
        zuvtest::writeFile(kState, c.before);
        os.updateStartStopFile(0);
        EXPECT_EQ(state(), c.after) << c.before;
        EXPECT_FALSE(zuvtest::fileExists(kTemporary));
    }
    // Without current_start, updateLastStart changes nothing; the stop brings all keys back.
    zuvtest::writeFile(kState, "last_start 5\nlast_stop 9\n");
    os.updateLastStart();
    EXPECT_EQ(state(), "last_start 5\nlast_stop 9\n");
    os.updateStartStopFile(7);
    EXPECT_EQ(os.readStartStopValue("last_start"), start);
    EXPECT_EQ(os.readStartStopValue("current_start"), 0);
    EXPECT_GE(os.readStartStopValue("last_stop"), start);
}

TEST_F(BootTrackingTest, UpdateLastStartReplacesEveryLastStartLineAndNeedsTheFile) {
    zuvtest::writeFile(kState, "last_stop 9\nlast_start 5\ncurrent_start 77\nold last_start 1\n");
    os.updateLastStart();
    EXPECT_EQ(state(), "last_stop 9\nlast_start 77\ncurrent_start 77\nlast_start 77\n");
    EXPECT_TRUE(hasMessage(vmwaretest::debugMessages(),
                           "After sending OS boots events, we can set current_start to last_start otherwise  it will "
                           "happen during ZUV shutdown. And in case of crash it won't happen."));

    zuvtest::writeFile(kState, "current_start 0\nlast_start 5\n");
    os.updateLastStart();
    EXPECT_EQ(state(), "current_start 0\nlast_start 5\n");

    unlink(kState);
    vmwaretest::clearLogs();
    os.updateLastStart();
    EXPECT_FALSE(zuvtest::fileExists(kState));
    EXPECT_FALSE(zuvtest::fileExists(kTemporary));
    EXPECT_TRUE(hasMessage(vmwaretest::debugMessages(),
                           "Could not update the 'last_start' value in /opt/kelzuv/vital/kelZUVStartStop.txt"));
}

TEST_F(BootTrackingTest, LeftOverTemporaryFileDoesNotLeakIntoTheResult) {
    const std::string original = "last_start 5\nlast_stop 9\ncurrent_start 0\n";
    for (int mode : {0, 1, 2}) {  // init rewrite, shutdown, updateLastStart
        zuvtest::writeFile(kState, original);
        zuvtest::writeFile(kTemporary, "last_start 1111\nlast_stop 2222\ncurrent_start 3333\ngarbage");
        if (mode == 2) {
            zuvtest::writeFile(kState, "last_start 5\nlast_stop 9\ncurrent_start 44\n");
            os.updateLastStart();
            EXPECT_EQ(state(), "last_start 44\nlast_stop 9\ncurrent_start 44\n");
        } else {
            os.updateStartStopFile(mode);
            EXPECT_EQ(os.readStartStopValue("last_start"), mode == 0 ? 5 : start);
            EXPECT_NE(state().find("current_start " + n(mode == 0 ? start : 0)), std::string::npos);
            EXPECT_EQ(state().find("1111"), std::string::npos);
            EXPECT_EQ(state().find("garbage"), std::string::npos);
        }
        EXPECT_FALSE(zuvtest::fileExists(kTemporary)) << mode;
    }
    // Left over with no state file: a first start, created fresh.
    unlink(kState);
    zuvtest::writeFile(kTemporary, "last_start 1111\n");
    os.updateStartStopFile(0);
    EXPECT_EQ(state(), "current_start " + n(start) + "\nlast_start 0\nlast_stop 0\n");
}

TEST_F(BootTrackingTest, FailedRewriteKeepsTheOldStateFileWhole) {
    const std::string original = "last_start 5\nlast_stop 9\ncurrent_start 0\n";

    // The temporary file can't be created (a directory stands in its place).
    zuvtest::writeFile(kState, original);
    zuvtest::makeDirectories(kTemporary);
    vmwaretest::clearLogs();
    EXPECT_NO_THROW(os.updateStartStopFile(0));
    EXPECT_EQ(state(), original);
    EXPECT_FALSE(vmwaretest::mainMessages().empty());
    zuvtest::writeFile(kState, "last_start 5\ncurrent_start 8\n");
    os.updateLastStart();
    EXPECT_EQ(state(), "last_start 5\ncurrent_start 8\n");
    zuvtest::writeFile(kState, original);
    try {
        os.updateStartStopFile(1);
        ADD_FAILURE() << "shutdown rewrite did not throw";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "Error opening the zuv startup file");
    }
    EXPECT_EQ(state(), original);
    unlink(kState);
    EXPECT_THROW(os.updateStartStopFile(0), std::runtime_error);
    EXPECT_FALSE(zuvtest::fileExists(kState));
    rmdir(kTemporary);

    // The rename fails: the state file is a mount point, which rename can't replace.
    const std::string source = "/tmp/statesource.txt";
    zuvtest::writeFile(source, original);
    zuvtest::writeFile(kState, "");
    ASSERT_EQ(mount(source.c_str(), kState, nullptr, MS_BIND, nullptr), 0) << strerror(errno);
    EXPECT_NO_THROW(os.updateStartStopFile(0));
    EXPECT_THROW(os.updateStartStopFile(1), std::runtime_error);
    zuvtest::writeFile(source, "last_start 5\ncurrent_start 8\n");
    os.updateLastStart();
    EXPECT_EQ(zuvtest::readFile(source), "last_start 5\ncurrent_start 8\n");
    zuvtest::writeFile(source, original);
    os.updateStartStopFile(0);
    EXPECT_EQ(zuvtest::readFile(source), original);
    EXPECT_FALSE(zuvtest::fileExists(kTemporary));
    ASSERT_EQ(umount(kState), 0);
}

TEST_F(BootTrackingTest, FullStorageKeepsTheOldStateFileWhole) {
    // A tiny file system for the vital directory, filled up after the state file is written.
    ASSERT_EQ(mount("zuvtest", kVital, "tmpfs", 0, "size=16k"), 0) << strerror(errno);
    const std::string original = "last_start 5\nlast_stop 9\ncurrent_start 0\n";
    zuvtest::writeFile(kState, original);
    {
        std::ofstream filler(std::string(kVital) + "/filler", std::ios::binary);
        const std::string block(4096, 'f');
        for (int i = 0; i < 64 && filler.good(); ++i) filler << block << std::flush;
    }
    EXPECT_NO_THROW(os.updateStartStopFile(0));
    EXPECT_EQ(state(), original);
    EXPECT_THROW(os.updateStartStopFile(1), std::runtime_error);
    EXPECT_EQ(state(), original);
    EXPECT_FALSE(zuvtest::fileExists(kTemporary));
    ASSERT_EQ(umount(kVital), 0);
}

TEST_F(BootTrackingTest, SyncRunsVimCmdAndWarnsWithTheRawStatus) {
    zuvsim::FakeHostTools tools(ZUV_SOURCE_DIR);
    tools.installIn("/bin", "vim-cmd");
    struct Case {
        int rc;
        const char* warning;
    };
    const Case cases[] = {{0, nullptr},
                          {3, "Failed to synchronize persistent storage. (0x300)"},
                          {1, "Failed to synchronize persistent storage. (0x100)"}};
    for (const Case& c : cases) {
        tools.answer("vim-cmd", "hostsvc/firmware/sync_config", "", c.rc);
        tools.clearCalls();
        vmwaretest::clearLogs();
        os.syncPersistentStorage();
        EXPECT_EQ(tools.calls(), std::vector<std::string>{"vim-cmd hostsvc/firmware/sync_config"});
        const auto lines = vmwaretest::mainMessages();
        if (c.warning == nullptr) {
            EXPECT_TRUE(lines.empty()) << c.rc;
        } else {
            EXPECT_EQ(lines, std::vector<std::string>{c.warning});
        }
    }
    unlink("/bin/vim-cmd");
    vmwaretest::clearLogs();
    os.syncPersistentStorage();  // the shell can't find it: status 127
    EXPECT_EQ(vmwaretest::mainMessages(),
              std::vector<std::string>{"Failed to synchronize persistent storage. (0x7F00)"});
}

}  // namespace
