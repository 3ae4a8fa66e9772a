// Host identity, paths, time texts, command runners, OS version and IPv4 addresses.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <stdexcept>
#include <fcntl.h>
#include <regex.h>
#include <sys/resource.h>
#include <unistd.h>

#include "fakeHostSystem.h"
#include "sim/hosttools/zuvFakeHostTools.h"
#include "vmware/zuvVMwareOSUtils.h"
#include "vmwareTestLog.h"

namespace {

using vmwaretest::FakeHostSystem;

bool matchesWhole(const std::string& text, const char* expression) {
    regex_t compiled;
    if (regcomp(&compiled, expression, REG_EXTENDED | REG_NOSUB) != 0) return false;
    const bool matched = regexec(&compiled, text.c_str(), 0, nullptr, 0) == 0;
    regfree(&compiled);
    return matched;
}

class HostQueriesTest : public ::testing::Test {
protected:
    void SetUp() override {
        vmwaretest::startLogging();
        vmwaretest::clearLogs();
    }
    zuvVMwareOSUtils os;
};

TEST_F(HostQueriesTest, KernelLineJoinsTheFiveUnameFieldsAndHostNameIsTheNodeName) {
    FakeHostSystem host;
    EXPECT_EQ(os.getKernelInfo(), "VMkernel esx01 8.0.2 #1 SMP Release build-22380479 x86_64");
    EXPECT_EQ(os.getHostName(), "esx01");
    host.nodename = "";
    host.machine = "aarch64";
    EXPECT_EQ(os.getKernelInfo(), "VMkernel  8.0.2 #1 SMP Release build-22380479 aarch64");
    EXPECT_EQ(os.getHostName(), "");
}

TEST_F(HostQueriesTest, UnameFailureGivesOneBlankAndAnErrorLine) {
    FakeHostSystem host;
    host.unameError = EFAULT;
    EXPECT_EQ(os.getKernelInfo(), " ");
    EXPECT_EQ(os.getHostName(), " ");
    const auto lines = vmwaretest::mainMessages();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "uname failed with error = " + std::to_string(EFAULT));
}

TEST_F(HostQueriesTest, PathsHangOffTheInstallPath) {
    EXPECT_EQ(os.getInstallPath(), "/opt/kelzuv");
    EXPECT_EQ(os.getVitalFilePrefix(), "/opt/kelzuv/vital/kel");
    EXPECT_EQ(os.getNicListPath(), "/opt/kelzuv/tmp/zuv_niclist.txt");
    EXPECT_EQ(os.getNicAddDetailsPath(), "/opt/kelzuv/tmp/zuv_nicAddDetails.txt");
}

TEST_F(HostQueriesTest, TimeTextIsCtimeWithoutLineFeedAndZoneFollowsTZ) {
    const std::string text = os.getCurrentTimeString();
    EXPECT_TRUE(matchesWhole(text, "^[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{2}:[0-9]{2}:[0-9]{2} [0-9]{4}$"))
        << text;
    const char* saved = std::getenv("TZ");
    const std::string savedZone = saved ? saved : "";
    for (const auto& [tz, name] :
         std::vector<std::pair<std::string, std::string>>{{"UTC0", "UTC"}, {"EST5", "EST"}, {"ZZZ-3", "ZZZ"}}) {
        setenv("TZ", tz.c_str(), 1);
        tzset();
        EXPECT_EQ(getTimeZoneName(), name) << tz;
    }
    if (saved)
        setenv("TZ", savedZone.c_str(), 1);
    else
        unsetenv("TZ");
    tzset();
}

TEST_F(HostQueriesTest, RunCommandCutsLongLinesAtTheBufferAndKeepsLineFeeds) {
    const std::string longLine(3000, 'x');
    auto lines = os.runCommand("printf '%s\\nshort\\n' " + longLine);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], std::string(2047, 'x'));
    EXPECT_EQ(lines[1], std::string(953, 'x') + "\n");
    EXPECT_EQ(lines[2], "short\n");

    // The buffer size is the object's.
    os.commandLineSize = 4;
    lines = os.runCommand("printf 'abcdefg'");
    EXPECT_EQ(lines, (std::vector<std::string>{"abc", "def", "g"}));

    // A failing command still gives what it printed; the exit status isn't looked at.
    os.commandLineSize = 2048;
    EXPECT_EQ(os.runCommand("echo partial; exit 3"), std::vector<std::string>{"partial\n"});
    EXPECT_EQ(os.runCommandOrThrow("echo one; echo two; false"), (std::vector<std::string>{"one\n", "two\n"}));
    EXPECT_TRUE(os.runCommand("true").empty());
    EXPECT_TRUE(vmwaretest::hasMessage(vmwaretest::debugMessages(), "Command to be executed : [true]"));
}

TEST_F(HostQueriesTest, ShellThatCannotStartGivesEmptyListOrThrows) {
    // With every descriptor in use, popen() can't make its pipe.
    struct rlimit saved {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &saved), 0);
    struct rlimit low = saved;
    low.rlim_cur = 64;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &low), 0);
    std::vector<int> held;
    for (int fd; (fd = open("/dev/null", O_RDONLY)) >= 0;) held.push_back(fd);
    const std::vector<std::string> lines = os.runCommand("echo never");
    std::exception_ptr thrown;
    try {
        os.runCommandOrThrow("echo never");
    } catch (...) {
        thrown = std::current_exception();
    }
    for (int fd : held) close(fd);
    setrlimit(RLIMIT_NOFILE, &saved);

    std::string message;
    try {
        if (thrown) std::rethrow_exception(thrown);
    } catch (const std::runtime_error& e) {
        message = e.what();
    }

    EXPECT_TRUE(lines.empty());
    EXPECT_EQ(message, "Too many open files");
    const auto debug = vmwaretest::debugMessages();
    EXPECT_TRUE(vmwaretest::hasMessage(debug, "popen() failed! : Too many open files"));
    EXPECT_TRUE(vmwaretest::hasMessage(debug, "popen() failed! : [24 - Too many open files]"));
}

TEST_F(HostQueriesTest, OSVersionAndProductAreTheTrimmedValuesOfLocalcli) {
    zuvsim::FakeHostTools tools(ZUV_SOURCE_DIR);
    struct Case {
        const char* output;
        int rc;
        const char* version;
        const char* product;
    };
    const Case cases[] = {
        {"   Product: VMware ESXi\n   Version: 8.0.2\n   Build: Releasebuild-22380479\n   Update: 2\n   Patch: 0\n", 0,
         "8.0.2", "VMware ESXi"},
        {"Product:   VMware ESXi  Enterprise Plus \t\nVersion:\n", 0, "", "VMware ESXi  Enterprise Plus"},
        {"product: lower case: with colon\nVERSION: 9.0.0:1\n", 0, "9.0.0:1", "lower case: with colon"},
        {"Firmware Version: 1.2\n   Version: 7.0.3\n", 0, "1.2", ""},
        {"", 1, "", ""},
        {"   Product: VMware ESXi\n   Version: 8.0.3\n", 2, "8.0.3", "VMware ESXi"},
    };
    for (const Case& c : cases) {
        tools.answer("localcli", "system version get", c.output, c.rc);
        EXPECT_EQ(os.getOSVersion(), c.version) << c.output;
        EXPECT_EQ(os.getOSProduct(), c.product) << c.output;
    }
    tools.forget("localcli", "system version get");
    EXPECT_EQ(os.getOSVersion(), "");
    // No cache: every call runs the tool.
    tools.clearCalls();
    os.getOSVersion();
    os.getOSVersion();
    EXPECT_EQ(tools.calls().size(), 2u);
}

TEST_F(HostQueriesTest, IPv4AddressesSkipLoopbackByNameAndOtherFamilies) {
    FakeHostSystem host;
    struct Case {
        std::vector<vmwaretest::FakeInterface> interfaces;
        std::vector<std::string> expected;
    };
    const Case cases[] = {
        {{{"lo", AF_INET, "127.0.0.1"}}, {}},
        {{{"lo", AF_INET, "127.0.0.1"},
          {"vmk0", AF_INET, "192.0.2.10"},
          {"vmk0", AF_INET6, "fe80::1"},
          {"vmk0", AF_INET, "198.51.100.7"},
          {"vmk1", 0, ""},
          {"vmk1", AF_INET, "203.0.113.255"}},
         {"192.0.2.10", "198.51.100.7", "203.0.113.255"}},
        // Only the name "lo" is left out: a loopback address on another interface stays.
        {{{"lo0", AF_INET, "127.0.0.2"}, {"lo", AF_INET, "10.0.0.1"}}, {"127.0.0.2"}},
        {{}, {}},
    };
    for (const Case& c : cases) {
        host.interfaces = c.interfaces;
        EXPECT_EQ(os.getIPv4Addresses(), c.expected);
    }
    EXPECT_EQ(host.listsFreed, host.listsHandedOut);
    EXPECT_TRUE(vmwaretest::hasMessage(vmwaretest::debugMessages(), "I/F Name: [lo] - IP Address: [127.0.0.1]"));

    host.getifaddrsError = ENOMEM;
    EXPECT_TRUE(os.getIPv4Addresses().empty());
}

TEST_F(HostQueriesTest, ErrorTextsComeFromStrerrorAndAreCut) {
    EXPECT_EQ(os.getErrorText(ENOENT), "No such file or directory");
    EXPECT_EQ(os.getShortErrorText(EACCES), "Permission denied");
    EXPECT_LE(os.getShortErrorText(-12345).size(), 255u);
    EXPECT_NE(os.getErrorText(-12345), "");
}

}  // namespace
