// The log facility: destinations, levels, line formats, thread numbers, directories and links.
// The logger is built once per process, so each configuration runs in a child process.
#include "log/zuvLogger.h"

#include "zuvChild.h"
#include "zuvSandbox.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <regex>
#include <sstream>
#include <thread>

namespace {

std::vector<std::string> linesOf(const std::string& path) {
    std::vector<std::string> lines;
    if (!zuvtest::fileExists(path)) return lines;
    std::istringstream in(zuvtest::readFile(path));
    std::string line;
    while (std::getline(in, line)) lines.push_back(line);
    return lines;
}

void logOneOfEach() {
    ZUV_LOG_ERROR("ZUV_UTILS", "error %d", 1);
    ZUV_LOG_WARNING("ZUV_UTILS", "warning %s", "two");
    ZUV_LOG_INFO("ZUV_UTILS", "info %d", 3);
    ZUV_LOG_DEBUG("ZUV_UTILS", "debug %d", 4);
}

TEST(Logger, LevelTextsAndLineNumbers) {
    const std::pair<std::string, int> levels[] = {{"Information", 2}, {"Debug", 3},  {"error,info", 4}, {"", 3},
                                                  {"WARNING", 3},     {"xINFOx", 2}, {"Error", 4}};
    for (const auto& level : levels) EXPECT_EQ(zuvLogger::levelOfText(level.first), level.second) << level.first;
    const std::pair<int, std::string> numbers[] = {{7, "007"}, {99, "099"}, {123, "123"}, {12345, "1234"}, {0, "000"}};
    for (const auto& n : numbers) EXPECT_EQ(zuvLogger::renderLineNumber(n.first), n.second);
    EXPECT_EQ(zuvLogger::kindOfLocation("syslog"), 3);
    EXPECT_EQ(zuvLogger::kindOfLocation("terminal"), 4);
    EXPECT_EQ(zuvLogger::kindOfLocation("Syslog"), 2);
}

TEST(Logger, FileLinesCarryTimeLevelThreadLineAndTag) {
    zuvtest::writeConfig(
        R"({"ZUVLogLocation":"/opt/kelzuv/log/a/zuv.log","DebugLogLocation":"/opt/kelzuv/log/b/dbg.log",
                             "EnableDebugLog":true,"LoggingLevel":"Info"})");
    zuvtest::makeDirectories("/opt/kelzuv/tmp");
    const auto result = zuvtest::inChild([] {
        logOneOfEach();
        std::thread([] { ZUV_LOG_WARNING("P_DISPATCH_Q", "from another thread"); }).join();
        ZUV_LOG_WARNING("P_DISPATCH_Q", "main again");
        return std::string("done");
    });
    ASSERT_EQ(result.text, "done");
    const auto main = linesOf("/opt/kelzuv/log/a/zuv.log");
    ASSERT_EQ(main.size(), 5u);
    const std::regex shape(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ \[ERROR\]    100 \d{3} ZUV_UTILS: error 1)");
    EXPECT_TRUE(std::regex_match(main[0], shape)) << main[0];
    EXPECT_NE(main[1].find(" [WARNING] 100 "), std::string::npos) << main[1];
    EXPECT_NE(main[2].find(" [INFO]    100 "), std::string::npos) << main[2];
    EXPECT_NE(main[3].find(" [WARNING] 101 "), std::string::npos) << main[3];  // a new thread, a new number
    EXPECT_NE(main[4].find(" [WARNING] 100 "), std::string::npos) << main[4];
    const auto debug = linesOf("/opt/kelzuv/log/b/dbg.log");
    ASSERT_EQ(debug.size(), 1u);
    EXPECT_NE(debug[0].find(" [DEBUG]   100 "), std::string::npos);
    EXPECT_NE(debug[0].find(" ZUV_UTILS: debug 4"), std::string::npos);
    // Both logs are published in /opt/kelzuv/tmp.
    char target[256] = {};
    ASSERT_GT(readlink("/opt/kelzuv/tmp/zuv.log", target, sizeof target - 1), 0);
    EXPECT_STREQ(target, "/opt/kelzuv/log/a/zuv.log");
    struct stat st {};
    ASSERT_EQ(stat("/opt/kelzuv/log/a", &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);
}

TEST(Logger, LevelDecidesWhatIsWrittenAndWhatIsFormatted) {
    struct Case {
        std::string level;
        bool debugOn;
        std::string written;  // e w i d
    };
    const Case cases[] = {{"Error", false, "e"},
                          {"Warning", false, "ew"},
                          {"Info", true, "ewid"},
                          {"Debug", true, "ewd"},
                          {"error,info", false, "e"}};
    for (const Case& c : cases) {
        zuvtest::writeConfig(R"({"ZUVLogLocation":"terminal","DebugLogLocation":"terminal","LoggingLevel":")" +
                             c.level + R"(","EnableDebugLog":)" + (c.debugOn ? "true" : "false") + "}");
        const auto result = zuvtest::inChild([] {
            int formatted = 0;
            auto count = [&formatted](const char* letter) {
                ++formatted;
                return letter;
            };
            testing::internal::CaptureStdout();
            ZUV_LOG_ERROR("T", "%s", count("e"));
            ZUV_LOG_WARNING("T", "%s", count("w"));
            ZUV_LOG_INFO("T", "%s", count("i"));
            ZUV_LOG_DEBUG("T", "%s", count("d"));
            const std::string out = testing::internal::GetCapturedStdout();
            std::string letters;
            std::istringstream lines(out);
            std::string line;
            while (std::getline(lines, line)) letters += line.back();
            return letters + "/" + std::to_string(formatted);
        });
        EXPECT_EQ(result.text, c.written + "/" + std::to_string(c.written.size())) << c.level;
    }
}

TEST(Logger, SyslogLinesHaveNoTimeAndThePriorityOfTheirLevel) {
    zuvtest::writeConfig(R"({"EnableDebugLog":true,"LoggingLevel":"Info"})");
    zuvtest::SyslogCollector syslogLines;
    zuvtest::inChild([] {
        logOneOfEach();
        ZUV_LOG_INFO("T", "%s", std::string(5000, 'x').c_str());
        return std::string();
    });
    std::vector<zuvtest::SyslogLine> logged;
    for (const auto& line : syslogLines.lines())
        if (line.message.find("ZUV_UTILS:") != std::string::npos || line.message.find(" T: ") != std::string::npos)
            logged.push_back(line);
    ASSERT_EQ(logged.size(), 5u);
    const std::regex shape(R"(\[ERROR\]    100 \d{3} ZUV_UTILS: error 1\n)");
    EXPECT_TRUE(std::regex_match(logged[0].message, shape)) << logged[0].message;
    EXPECT_EQ(logged[0].priority, LOG_ERR);
    EXPECT_EQ(logged[1].priority, LOG_WARNING);
    EXPECT_EQ(logged[2].priority, LOG_INFO);
    EXPECT_EQ(logged[3].priority, LOG_DEBUG);
    EXPECT_EQ(logged[3].message.rfind("[DEBUG]   100 ", 0), 0u);
    // A message is cut at 4095 characters.
    EXPECT_EQ(logged[4].message.size() - logged[4].message.find("T: ") - 3 - 1, 4095u);
}

TEST(Logger, UncreatableDirectoriesEndTheProcessWith246Or245) {
    zuvtest::writeFile("/opt/kelzuv/plainfile", "x");
    struct Case {
        std::string config;
        int status;
        std::string line;
    };
    const Case cases[] = {
        {R"({"ZUVLogLocation":"/opt/kelzuv/plainfile/x/zuv.log","a":1})", 246,
         "Failed to create directory path for ZUV log file [/opt/kelzuv/plainfile/x/zuv.log]: 20 - Not a directory"},
        {R"({"DebugLogLocation":"/opt/kelzuv/plainfile/y/dbg.log","a":1})", 245,
         "Failed to create directory path for ZUV debug log file [/opt/kelzuv/plainfile/y/dbg.log]: 20 - Not a "
         "directory"},
    };
    for (const Case& c : cases) {
        zuvtest::writeConfig(c.config);
        zuvtest::SyslogCollector syslogLines;
        const auto result = zuvtest::inChild([] {
            ZUV_LOG_ERROR("T", "never");
            return std::string("returned");
        });
        EXPECT_EQ(result.exitStatus, c.status);
        EXPECT_EQ(result.text, "");
        const auto lines = syslogLines.lines();
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.back().message, c.line);
        EXPECT_EQ(lines.back().priority, LOG_ERR);
    }
}

TEST(Logger, LinksArePublishedOnlyForFilesThatExist) {
    zuvtest::makeDirectories("/opt/kelzuv/tmp");
    zuvtest::writeFile("/scratch/log/kelzuv/backup_log", "old");
    zuvtest::writeFile("/opt/kelzuv/dbg/old.log", "old");
    // Debug log off: no debug file is opened, but its directory is made and its existing file linked.
    zuvtest::writeConfig(R"({"DebugLogLocation":"/opt/kelzuv/dbg/old.log","EnableDebugLog":false,"a":1})");
    zuvtest::inChild([] {
        ZUV_LOG_DEBUG("T", "not written");
        return std::string();
    });
    char target[256] = {};
    ASSERT_GT(readlink("/opt/kelzuv/tmp/backup_log", target, sizeof target - 1), 0);
    EXPECT_STREQ(target, "/scratch/log/kelzuv/backup_log");
    std::fill(std::begin(target), std::end(target), 0);
    ASSERT_GT(readlink("/opt/kelzuv/tmp/old.log", target, sizeof target - 1), 0);
    EXPECT_STREQ(target, "/opt/kelzuv/dbg/old.log");
    EXPECT_EQ(zuvtest::readFile("/opt/kelzuv/dbg/old.log"), "old");

    // A log that lives in the publishing directory itself is not linked onto itself.
    zuvtest::SyslogCollector syslogLines;
    EXPECT_FALSE(zuvLogger::publishLink("/opt/kelzuv/tmp/backup_log", "/opt/kelzuv/tmp"));
    EXPECT_TRUE(zuvLogger::publishLink("/opt/kelzuv/none.log", "/opt/kelzuv/tmp"));  // nothing to publish yet
    EXPECT_EQ(syslogLines.messages(),
              (std::vector<std::string>{"Target path(/opt/kelzuv/tmp/backup_log) matches symbolic link "
                                        "path(/opt/kelzuv/tmp/backup_log). Hence, symbolic link will not be "
                                        "created."}));
}

TEST(Logger, NoConfigurationLeavesNoLoggerAndTheNextUseBuildsIt) {
    unlink("/opt/kelzuv/vital/zuv.conf");
    const auto result = zuvtest::inChild([] {
        std::string seen;
        try {
            ZUV_LOG_ERROR("T", "lost");
            seen = "logged";
        } catch (const std::runtime_error& e) {
            seen = e.what();
        }
        zuvtest::writeConfig(R"({"ZUVLogLocation":"/opt/kelzuv/log/retry.log","a":1})");
        ZUV_LOG_ERROR("T", "after %s", "retry");
        return seen;
    });
    EXPECT_EQ(result.text, "Config Uninitlized : will use the default configurations");
    const auto lines = linesOf("/opt/kelzuv/log/retry.log");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find(" [ERROR]    100 "), std::string::npos) << lines[0];
    EXPECT_NE(lines[0].find(" T: after retry"), std::string::npos) << lines[0];
}

TEST(Logger, DirectoriesOfAPathAreMadeOneByOne) {
    EXPECT_EQ(zuvLogger::createDirectories("/opt/kelzuv/d1/d2/file.log"), 0);
    struct stat st {};
    EXPECT_EQ(stat("/opt/kelzuv/d1/d2", &st), 0);
    EXPECT_NE(stat("/opt/kelzuv/d1/d2/file.log", &st), 0);                     // the last component is the file
    EXPECT_EQ(zuvLogger::createDirectories("/opt/kelzuv/d1/d2/file.log"), 0);  // existing ones are fine
    EXPECT_EQ(zuvLogger::createDirectories("nofile"), 0);
    zuvtest::writeFile("/opt/kelzuv/blocker", "");
    EXPECT_EQ(zuvLogger::createDirectories("/opt/kelzuv/blocker/x/y"), -1);
}

}  // namespace
