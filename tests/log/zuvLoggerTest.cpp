// The log facility: levels, destinations, line formats, thread numbers, what its construction makes and
// publishes. The logger is built once per process, so each configuration runs in a child.
#include "log/zuvLogger.h"

#include "zuvProcess.h"
#include "zuvSandbox.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <regex>
#include <sstream>
#include <thread>

namespace {

std::string config(const std::string& main, const std::string& debug, const std::string& level = "Info",
                   bool on = true) {
    return R"({"ZUVLogLocation":")" + main + R"(","DebugLogLocation":")" + debug + R"(","LoggingLevel":")" + level +
           R"(","EnableDebugLog":)" + (on ? "true}" : "false}");
}

const std::string t = "terminal", s = "syslog", o = "/opt/kelzuv/", tmp = o + "tmp/",
                  dir = " dir " + std::to_string(0700);
const std::string kTime = R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ )";
// The main log's lines: an error, a warning from another thread, an info line cut at 4095 characters, the members
// called at line 1, infoAlways at lines 99 and 12345.
const std::string kMainLines = kTime + R"(\[ERROR\]    100 0*(\d+) T: e \1\n)" + kTime +
                               R"(\[WARNING\] 101 0*(\d+) T: w \2\n)" + kTime + R"(\[INFO\]    100 \d+ T: ix{4094}\n)" +
                               kTime + R"(\[ERROR\]    100 001 T: E\n)" + kTime + R"(\[WARNING\] 100 001 T: W\n)" +
                               kTime + R"(\[INFO\]    100 001 T: I\n)" + kTime + R"(\[INFO\]    100 099 T: a\n)" +
                               kTime + R"(\[INFO\]    100 1234 T: b\n)";
const std::string kDebugLines =
    kTime + R"(\[DEBUG\]   100 0*(\d+) T: d \1\n)" + kTime + R"(\[DEBUG\]   100 001 T: D\n)";
// The syslog lines of the main channel at Info, debug off: "<initial><letter><priority>".
const std::string kMainToSyslog = "Ee3Ww4Ii6EE3WW4II6Ia6Ib6";

std::string sameAsLink(const std::string& target, const std::string& link) {
    return "4 Target path(" + target + ") matches symbolic link path(" + link +
           "). Hence, symbolic link will not be created.\n";
}

std::string notADirectory(const std::string& which, const std::string& path) {
    return "3 Failed to create directory path for ZUV " + which + " file [" + path + "]: 20 - Not a directory\n";
}

std::string whatIsAt(const std::string& path) {  // "dir <mode>", "-> <target>", a file's content, or "none"
    struct stat st {};
    if (lstat(path.c_str(), &st) != 0) return "none";
    if (S_ISDIR(st.st_mode)) return "dir " + std::to_string(st.st_mode & 0777);
    return S_ISLNK(st.st_mode) ? "-> " + std::filesystem::read_symlink(path).string() : zuvtest::readFile(path);
}

// config: "none" for no file (the child then writes one, main log at retry.log). setLevel: 0 none, -1 setLogKindFile
// instead. written: the messages the macros formatted, the letters (e w i d; the members E W I D; a b: infoAlways) on
// standard output, then in syslog each behind its level text's initial and ahead of its priority. before: files
// made, "<path> <content>"; after: "<path> <what is there>" (a pattern); syslog: the logger's own lines.
struct Case {
    std::string config;
    int setLevel;
    std::string written;
    std::vector<std::string> before, after;
    int status;
    std::string syslog;
};
Case row(const std::string& config, int setLevel, const std::string& written,
         const std::vector<std::string>& before = {}, const std::vector<std::string>& after = {}, int status = 0,
         const std::string& syslog = "") {
    return {config, setLevel, written, before, after, status, syslog};
}

TEST(Logger, ConfigurationDecidesWhatIsWrittenWhereAndConstructionMakesDirectoriesFilesAndLinks) {
    const Case cases[] = {
        row(config(t, t, "WARNING", false), 0, "2ewEWab "),
        row(config(t, t, "Info"), 0, "4ewidEWIDab "),
        row(config(t, t, "Debug"), 0, "3ewdEWDab "),
        row(config(t, t, "xerror,infox", false), 0, "1eEab "),
        row(config(t, t, "", false), 0, "2ewEWab "),
        row(config(t, t, "Error", false), 1, "4ewiEWIab "),
        row(config(t, t, "Info"), 5, "1dDab "),
        row(config(s, s, "Info"), 0, "4 Ee3Ww4Ii6Dd7EE3WW4II6DD7Ia6Ib6"),
        row(config(s, t, "Info"), -1, "4dD "),  // a main stream that was never opened
        // Not syslog: the case of the word counts.
        row(config(s, "Syslog"), 0, "4 " + kMainToSyslog, {}, {o + "Syslog " + kDebugLines}),
        row(config(o + "m1/a/zuv.log", o + "d1/b/dbg.log"), 0, "4 ", {"/scratch/log/kelzuv/backup_log old"},
            {o + "m1" + dir, o + "d1/b" + dir, o + "m1/a/zuv.log " + kMainLines, o + "d1/b/dbg.log " + kDebugLines,
             tmp + "zuv.log -> " + o + "m1/a/zuv.log", tmp + "dbg.log -> " + o + "d1/b/dbg.log",
             tmp + "backup_log -> /scratch/log/kelzuv/backup_log"}),
        row(config(s, o + "d2/new.log", "Info", false), 0, "3 " + kMainToSyslog, {},
            {o + "d2" + dir, o + "d2/new.log none", tmp + "new.log none"}),
        // A log that lives where its link would go stays, under any spelling of its path.
        row(config(tmp + "own.log", o + "d3/old.log", "Info", false), 0, "3 ",
            {tmp + "own.log old\n", o + "d3/old.log old"},
            {tmp + "own.log old\n" + kMainLines, tmp + "old.log -> " + o + "d3/old.log"}, 0,
            sameAsLink(tmp + "own.log", tmp + "own.log")),
        row(config(o + "tmp/../tmp/own.log", t, "Info", false), 0, "3 ", {tmp + "own.log old\n"},
            {tmp + "own.log old\n" + kMainLines}, 0, sameAsLink(o + "tmp/../tmp/own.log", tmp + "own.log")),
        row(config(o + "plain/x/zuv.log", s), 0, "", {o + "plain "}, {}, 246,
            notADirectory("log", o + "plain/x/zuv.log")),
        row(config(s, o + "plain/y/dbg.log"), 0, "", {o + "plain "}, {}, 245,
            notADirectory("debug log", o + "plain/y/dbg.log")),
        row(config(tmp, tmp), 0, "4 ", {}, {}, 0,
            "3 Error opening ZUV log file [" + tmp + "]: 21 - Is a directory\n" +
                "3 Error opening the ZUV debug log file[" + tmp + "]: 21 - Is a directory\n"),
        row("none", 0, "4 Dd7DD7", {},
            {o + "retry.log Config Uninitlized : will use the default configurations\n" + kMainLines}, 0,
            "4 Config /opt/kelzuv/vital/zuv.conf Couldnt open\n"),
    };
    for (const Case& c : cases) {
        c.config == "none" ? (void)unlink("/opt/kelzuv/vital/zuv.conf") : zuvtest::writeConfig(c.config);
        for (const std::string& file : c.before)
            zuvtest::writeFile(file.substr(0, file.find(' ')), file.substr(file.find(' ') + 1));
        zuvtest::makeDirectories(tmp);
        zuvtest::SyslogCollector syslogLines;
        const zuvtest::ChildResult child = zuvtest::inChild([&c] {
            chdir("/opt/kelzuv");  // for a log file without a directory
            int formatted = 0;
            const auto count = [&formatted](const char* letter) { return ++formatted, letter; };
            zuvLogger* log = nullptr;
            try {
                log = zuvLogger::getInstance();
            } catch (const std::runtime_error& e) {  // no logger yet; the next use builds it
                zuvtest::writeFile("/opt/kelzuv/retry.log", e.what() + std::string("\n"));
                zuvtest::writeConfig(config("/opt/kelzuv/retry.log", "syslog"));
                log = zuvLogger::getInstance();
            }
            if (c.setLevel > 0) log->setLogLevel(c.setLevel);
            if (c.setLevel < 0) log->setLogKindFile();
            testing::internal::CaptureStdout();
            ZUV_LOG_ERROR("T", "%s %d", count("e"), __LINE__);
            std::thread([&] { ZUV_LOG_WARNING("T", "%s %d", count("w"), __LINE__); }).join();
            ZUV_LOG_INFO("T", "%s%s", count("i"), std::string(5000, 'x').c_str());
            ZUV_LOG_DEBUG("T", "%s %d", count("d"), __LINE__);
            log->error("E", "T", 1), log->warning("W", "T", 1), log->info("I", "T", 1), log->debug("D", "T", 1);
            log->infoAlways("a", "T", 99);
            log->infoAlways("b", "T", 12345);
            std::string letters = std::to_string(formatted);
            std::istringstream out(testing::internal::GetCapturedStdout());
            for (std::string line; std::getline(out, line);) letters += line[line.find(" T: ") + 4];
            return letters + " ";
        });
        std::string result = child.text, logged;
        for (const zuvtest::SyslogLine& l : syslogLines.lines()) {  // no time in a log line: syslog adds its own
            if (l.message.find(" T: ") == std::string::npos) {
                if (l.message.rfind("ZUV_", 0) && l.message.rfind("Parse ", 0))  // but the store's lines
                    logged += std::to_string(l.priority & 7) + " " + l.message + "\n";
                continue;
            }
            EXPECT_TRUE(std::regex_match(
                l.message, std::regex(R"((\[ERROR\]   |\[WARNING\]|\[(INFO\] |DEBUG\])  ) 10[01] \d{3,4} T: \w.*\n)")))
                << l.message;
            result += l.message.substr(1, 1) + l.message[l.message.find(" T: ") + 4] + std::to_string(l.priority & 7);
        }
        EXPECT_EQ(result, c.written) << c.config << " " << c.setLevel;
        EXPECT_EQ(child.exitStatus, c.status) << c.config;
        EXPECT_EQ(logged, c.syslog) << c.config;
        for (const std::string& expected : c.after) {
            const std::string path = expected.substr(0, expected.find(' '));
            EXPECT_TRUE(std::regex_match(path + " " + whatIsAt(path), std::regex(expected)))
                << c.config << " " << path << ": " << whatIsAt(path);
        }
    }
}

}  // namespace
