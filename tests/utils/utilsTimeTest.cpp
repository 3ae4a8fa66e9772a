#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <stdexcept>
#include <string>

#include "utils/zuvUtils.h"
#include "utilsTestLog.h"
#include "zuvSandbox.h"

using utilstest::debugMessages;
using utilstest::hasMessage;
using utilstest::mainMessagesAt;

namespace {
const char* const kSummaryLog = "/var/log/vmksummary.log";
const char* const kScratch = "/tmp/zuvboot.log";

bool pathExists(const char* path) {
    struct stat status {};
    return lstat(path, &status) == 0;
}

// 2020-03-04T05:06:07Z in UTC.
constexpr time_t kMarch4 = 1583298367;
}  // namespace

class UtilsTime : public ::testing::Test {
protected:
    void SetUp() override {
        utilstest::startLogging();
        utilstest::clearLogs();
        setenv("TZ", "UTC", 1);
        tzset();
        unlink(kSummaryLog);
        unlink(kScratch);
    }
    zuvUtils utils;
};

TEST_F(UtilsTime, ParseTimestampReadsFixedPositions) {
    struct Case {
        const char* text;
        time_t expected;
    } cases[] = {
        {"2020-03-04T05:06:07Z", kMarch4},
        {"2020/03/04 05:06:07!", kMarch4},                // separators aren't looked at
        {"2020-03-04T05:06:07.123456+01:00", kMarch4},    // nor what follows position 19
        {"2020-13-04T05:06:07Z", kMarch4 + 306 * 86400},  // month 13 normalised into 2021
        {"2020-03-04T05:06:07", 0},                       // 19 characters
        {"", 0},
    };
    for (const Case& c : cases) EXPECT_EQ(utils.parseTimestamp(c.text), c.expected) << c.text;
    EXPECT_TRUE(hasMessage(debugMessages(), "Invalid time stamp format."));
    EXPECT_THROW(utils.parseTimestamp("2020-xx-04T05:06:07Z"), std::invalid_argument);
    EXPECT_THROW(utils.parseTimestamp("abcd-03-04T05:06:07Z"), std::invalid_argument);
}

TEST_F(UtilsTime, TextFormsOfThePresent) {
    // Retried until the clock stays within one second around the call.
    for (int attempt = 0; attempt < 100; ++attempt) {
        const time_t before = time(nullptr);
        const std::string shortForm = utils.currentShortTimestamp();
        const std::string utc = utils.currentUtcTimestamp();
        const std::string local = utils.currentLocalTimestamp();
        if (time(nullptr) != before) continue;
        struct tm now {};
        localtime_r(&before, &now);
        char expected[64];
        strftime(expected, sizeof expected, "%b ", &now);
        std::string expectedShort = std::string(expected) + std::to_string(now.tm_mday);
        strftime(expected, sizeof expected, " %H:%M:%S", &now);
        expectedShort += expected;
        EXPECT_EQ(shortForm, expectedShort);
        strftime(expected, sizeof expected, "%FT%TZ", gmtime_r(&before, &now));
        EXPECT_EQ(utc, expected);
        strftime(expected, sizeof expected, "%F %T", localtime_r(&before, &now));
        EXPECT_EQ(local, expected);
        return;
    }
    FAIL() << "the clock never held still for one second";
}

TEST_F(UtilsTime, TimespecDifferenceBorrowsASecond) {
    struct timespec result {};
    utils.timespecDifference({5, 100}, {3, 200}, result);
    EXPECT_EQ(result.tv_sec, 1);
    EXPECT_EQ(result.tv_nsec, 999999900);
    utils.timespecDifference({5, 300}, {3, 200}, result);
    EXPECT_EQ(result.tv_sec, 2);
    EXPECT_EQ(result.tv_nsec, 100);
}

TEST_F(UtilsTime, BootTimesComeFromTheLastTwoBootLines) {
    struct Case {
        const char* log;  // nullptr: no summary log at all
        time_t expectedLast, expectedPrevious;
    } cases[] = {
        {"2020-03-01T00:00:00Z bootstop: Host has booted\n"
         "2020-03-02T00:00:00Z bootstop: Host is rebooting\n"
         "2020-03-03T00:00:00Z bootstop: Host has booted\n"
         "2020-03-04T05:06:07Z bootstop: Host has booted\n",
         kMarch4, kMarch4 - 86400 - 5 * 3600 - 6 * 60 - 7},
        {"2020-03-04T05:06:07Z bootstop: Host has booted", kMarch4, 0},  // no final line feed
        {"2020-03-02T00:00:00Z bootstop: Host is rebooting\n", 77, 0},
        {"", 77, 0},
        {nullptr, 77, 0},
    };
    for (const Case& c : cases) {
        unlink(kSummaryLog);
        if (c.log) zuvtest::writeFile(kSummaryLog, c.log);
        time_t last = 77, previous = 88;
        EXPECT_EQ(utils.getBootTimes(&last, &previous), 0);
        EXPECT_EQ(last, c.expectedLast) << (c.log ? c.log : "no log");
        EXPECT_EQ(previous, c.expectedPrevious) << (c.log ? c.log : "no log");
        EXPECT_FALSE(pathExists(kScratch));
    }
}

TEST_F(UtilsTime, LastShutdownTimeIsTheLastRebootLine) {
    zuvtest::writeFile(kSummaryLog,
                       "2020-03-01T00:00:00Z bootstop: Host is rebooting\n"
                       "2020-03-04T05:06:07Z bootstop: Host is rebooting\n"
                       "2020-03-05T00:00:00Z bootstop: Host has booted\n");
    time_t shutdown = 5;
    EXPECT_EQ(utils.getLastShutdownTime(&shutdown), 0);
    EXPECT_EQ(shutdown, kMarch4);
    EXPECT_FALSE(pathExists(kScratch));

    zuvtest::writeFile(kSummaryLog, "2020-03-05T00:00:00Z bootstop: Host has booted\n");
    shutdown = 5;
    EXPECT_EQ(utils.getLastShutdownTime(&shutdown), 0);
    EXPECT_EQ(shutdown, 5);  // no reboot line: unchanged
}

TEST_F(UtilsTime, LeftOverScratchFileIsReplacedNotAddedTo) {
    zuvtest::writeFile(kSummaryLog, "2020-03-04T05:06:07Z bootstop: Host has booted\n");
    zuvtest::writeFile(kScratch, "2019-01-01T00:00:00Z\n2019-01-02T00:00:00Z\n");
    time_t last = 0, previous = 0;
    EXPECT_EQ(utils.getBootTimes(&last, &previous), 0);
    EXPECT_EQ(last, kMarch4);
    EXPECT_EQ(previous, 0);
    EXPECT_FALSE(pathExists(kScratch));
}

TEST_F(UtilsTime, PlantedLinkAtTheScratchNameCannotRedirectTheOutput) {
    zuvtest::writeFile(kSummaryLog, "2020-03-04T05:06:07Z bootstop: Host is rebooting\n");
    zuvtest::writeFile("/tmp/victim", "precious\n");
    ASSERT_EQ(symlink("/tmp/victim", kScratch), 0);
    time_t shutdown = 0;
    EXPECT_EQ(utils.getLastShutdownTime(&shutdown), 0);
    EXPECT_EQ(shutdown, kMarch4);
    EXPECT_EQ(zuvtest::readFile("/tmp/victim"), "precious\n");
    EXPECT_FALSE(pathExists(kScratch));
}

TEST_F(UtilsTime, ScratchFileIsRemovedWhenABadStampThrows) {
    zuvtest::writeFile(kSummaryLog, "2020-XX-04T05:06:07Z bootstop: Host has booted\n");
    time_t last = 1, previous = 2;
    EXPECT_THROW(utils.getBootTimes(&last, &previous), std::invalid_argument);
    EXPECT_FALSE(pathExists(kScratch));
    zuvtest::writeFile(kSummaryLog, "2020-XX-04T05:06:07Z bootstop: Host is rebooting\n");
    EXPECT_THROW(utils.getLastShutdownTime(&last), std::invalid_argument);
    EXPECT_FALSE(pathExists(kScratch));
}

TEST_F(UtilsTime, FailingPipelineLeavesTheTimesAndWarns) {
    zuvtest::writeFile(kSummaryLog, "2020-03-04T05:06:07Z bootstop: Host has booted\n");
    zuvtest::writeFile("/tmp/failing-tools/awk", "#!/bin/sh\nexit 3\n");
    ASSERT_EQ(chmod("/tmp/failing-tools/awk", 0755), 0);
    const std::string savedPath = getenv("PATH");
    setenv("PATH", ("/tmp/failing-tools:" + savedPath).c_str(), 1);
    time_t last = 1, previous = 2, shutdown = 3;
    const int bootResult = utils.getBootTimes(&last, &previous);
    const int shutdownResult = utils.getLastShutdownTime(&shutdown);
    setenv("PATH", savedPath.c_str(), 1);
    EXPECT_EQ(bootResult, -1);
    EXPECT_EQ(shutdownResult, -1);
    EXPECT_EQ(last, 1);
    EXPECT_EQ(previous, 2);
    EXPECT_EQ(shutdown, 3);
    EXPECT_FALSE(pathExists(kScratch));
    EXPECT_TRUE(hasMessage(mainMessagesAt("WARNING"), "Error occurred in gathering system boot time information."));
    EXPECT_TRUE(
        hasMessage(mainMessagesAt("WARNING"), "Error occurred in gathering system last shutdown time information."));
}

TEST_F(UtilsTime, ScratchNameThatCannotBeClearedIsAFailure) {
    ASSERT_EQ(mkdir(kScratch, 0755), 0);  // a directory can't be unlinked or replaced
    zuvtest::writeFile(std::string(kScratch) + "/keep", "x");
    time_t last = 1, previous = 2;
    EXPECT_EQ(utils.getBootTimes(&last, &previous), -1);
    EXPECT_EQ(zuvtest::readFile(std::string(kScratch) + "/keep"), "x");
    unlink((std::string(kScratch) + "/keep").c_str());
    rmdir(kScratch);
}
