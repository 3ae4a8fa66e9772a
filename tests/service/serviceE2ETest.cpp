// zuvCli and the simulated service on the library's road, in the test sandbox.
#include "zuvProcess.h"
#include "zuvSandbox.h"
#include "zuvSmbiosImage.h"
#include "zuvTestLog.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <json/json.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <map>
#include <set>
#include <sstream>
#include <tuple>

namespace {

using Args = std::vector<std::string>;
const char* const kSent = "ZUVCli: Test Event sent to RMC. Please check logs for details.\n";
const char* const kNotSent = "ZUVCli: Test Event couldn't be sent to RMC. Please check logs for details.\n";
const char* const kSaved = "ZUVCli: ZUV inventory saved to given file.\n";
const char* const kCantOpen = "ZUVCli: Unable to save ZUV inventory to given file. Unable to open file for writing.\n";
const char* const kRecord = "/tmp/service-record.txt";  // the packets the service read
const char* const kReport = "/tmp/rmc-report.txt";      // what the simulated RMC received

std::string replyPipeOf(pid_t pid) { return "/var/run/kelzuvcli" + std::to_string(pid); }

// Client i's payload: an event with a location, or an inventory into a file that can or can't be
// written, all its own. The kinds get different codes: an answer meant for another shows.
std::string payloadOf(int i) {
    const std::string number = std::to_string(10000000 + i);  // a location of 16 characters for every client
    return i % 3 ? (i % 3 == 1 ? "/tmp/inv" : "/tmp/no-dir/inv") + number + ".json" : "708 LOCATION" + number;
}
std::string outputOf(int i, const char* stream) { return "/tmp/client" + std::to_string(i) + stream; }

// Every resource enabled, an SMBIOS image at the host's path and the host's version tool.
class Service : public ::testing::Test {
protected:
    void SetUp() override {
        zuvtest::writeConfig(R"({"CliMode":"full","EnableResources":["All"],"LoggingLevel":"Info",)"
                             R"("ZUVLogLocation":"/opt/kelzuv/log/zuv.log"})");
        zuvtest::clearLogs();
        zuvtest::makeDirectories("/vmfs/devices/char/mem");
        zuvsim::SmbiosImage().addType1("PLATFAMILY00002").addSlot({}).writeTo("/vmfs/devices/char/mem/smbios");
        zuvtest::writeFile("/bin/localcli", "#!/bin/sh\necho '   Version: 8.0.3'\n");
        chmod("/bin/localcli", 0755);
        for (const char* file : {kRecord, kReport, "/var/run/kelzuv"}) unlink(file);
    }
    void startService(Args options) {
        options.insert(options.begin(), {ZUV_SIM_SERVICE_PATH, "--record", kRecord});
        service.start(options);
        ASSERT_TRUE(zuvtest::waitForPath("/var/run/kelzuv")) << "the simulated service made no pipe";
    }

    // Starts clients first..first+count-1 at once, each printing into files of its own.
    void launch(int first, int count) {
        for (int i = first; i < first + count; ++i) {
            const std::string request = i % 3 ? " -j " + payloadOf(i) : " -t 708 -l " + payloadOf(i).substr(4);
            clients[i].start(
                {"/bin/sh", "-c",
                 "exec " ZUV_CLI_PATH + request + " >" + outputOf(i, ".out") + " 2>" + outputOf(i, ".err")});
            pids[clients[i].pid()] = i;
        }
    }
    // True when client i ended with status 0, having printed its own line and removed its pipe.
    bool answered(int i, int status) {
        const char* line = i % 3 == 0 ? kSent : i % 3 == 1 ? kSaved : kCantOpen;
        return status == 0 && zuvtest::readFile(outputOf(i, ".out")) == line &&
               zuvtest::readFile(outputOf(i, ".err")).empty() && !zuvtest::fileExists(replyPipeOf(clients.at(i).pid()));
    }
    // How many packets each client sent; every packet the service read must come from a client
    // of the test and carry that client's own request.
    std::map<int, int> packetsByClient() {
        std::map<int, int> sent;
        std::istringstream lines(zuvtest::readFile(kRecord));
        for (std::string line; std::getline(lines, line);) {
            std::istringstream words(line.substr(7));  // "packet "
            std::string bytes;
            for (unsigned byte; words >> std::hex >> byte;) bytes += static_cast<char>(byte);
            const int client = pids.at(static_cast<uint8_t>(bytes.at(9)) | static_cast<uint8_t>(bytes.at(10)) << 8 |
                                       static_cast<uint8_t>(bytes.at(11)) << 16);  // throws for a stranger's packet
            EXPECT_EQ(bytes.substr(17), payloadOf(client)) << line;
            ++sent[client];
        }
        return sent;
    }
    // Client i's exit status; once one has not ended within the grace, the rest get none.
    int ended(int i) {
        const int status = clients[i].wait(grace);
        if (status < 0) grace = 0;
        return status;
    }
    // A wave of clients that must all be answered.
    void answeredWave(int first, int count) {
        launch(first, count);
        for (int i = first; i < first + count; ++i) EXPECT_TRUE(answered(i, ended(i))) << i;
    }

    zuvtest::BackgroundProcess service;  // stopped with the fixture
    std::map<int, zuvtest::BackgroundProcess> clients;
    std::map<pid_t, int> pids;
    int grace = 60000;
};

TEST_F(Service, TestEventTravelsTheRoadAndZuvCliPrintsTheDeliverysOutcome) {
    // The simulated RMC's behaviour, the line zuvCli prints, an error line of the IPMI service.
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"normal", kSent, nullptr},
        {"lost", kNotSent, "RMC Cli Command Execution failed"},
    };
    utsname host{};
    uname(&host);
    for (const auto& [rmc, out, errorLine] : cases) {
        startService({"--rmc", "sim", "--rmc-behave", rmc, "--rmc-report", kReport});
        const auto result = zuvtest::runProcess({ZUV_CLI_PATH, "-t", "708", "-l", "ABCDEFGHIJKLMNOP"});
        service.stop();
        EXPECT_EQ(result.exitStatus, 0) << rmc << result.err;
        EXPECT_EQ(result.out, out) << rmc;
        // Exactly one command reached the RMC; its argument follows its line.
        const std::string report = zuvtest::readFile(kReport);
        const size_t command = report.find("RMC received MPEventGen: ");
        ASSERT_NE(command, std::string::npos) << report;
        EXPECT_EQ(command, report.rfind("RMC received ")) << report;
        const auto errors = zuvtest::logMessages(zuvtest::kMainLog, "ZUV_IPMI_SERVICE", "ERROR");
        if (errorLine != nullptr) {
            EXPECT_TRUE(zuvtest::hasMessage(errors, errorLine)) << rmc;
        } else {
            EXPECT_TRUE(errors.empty()) << errors.front();
            Json::Value event;
            std::istringstream(report.substr(report.find('\n', command))) >> event;  // throws for no JSON
            EXPECT_EQ(event["ID"], 708);
            EXPECT_EQ(event["PhysicalLocation"], "ABCDEFGHIJKLMNOP");
            EXPECT_EQ(event["HostName"], host.nodename);
            EXPECT_EQ(event["OSVersion"], "8.0.3");
            EXPECT_EQ(event["OSType"], 104);
            EXPECT_NE(event["IPv4Addresses"][0]["Address"].asString(), "");
        }
        unlink(kReport);
    }
}

TEST_F(Service, EveryClientOfManyAtOnceGetsItsOwnAnswer) {
    const Args options{"--rmc", "sim", "--rmc-pause", "none", "--rmc-report", kReport};
    startService(options);
    // A sender takes the pipe's lock before its first byte: while the test holds it, one waits.
    const int held = open("/var/run/kelzuv", O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_EQ(flock(held, LOCK_EX), 0);
    launch(0, 1);
    const std::string waiter = "-> FLOCK  ADVISORY  WRITE " + std::to_string(clients[0].pid()) + " ";
    ASSERT_TRUE(zuvtest::eventually([&] { return zuvtest::logHolds("/proc/locks", waiter); }, 30000))
        << "no wait for the lock";
    close(held);
    EXPECT_TRUE(answered(0, ended(0)));

    const int waves = ZUV_LOAD_WAVES, wave = 50, loaded = 1 + waves * wave;
    for (int first = 1; first < loaded; first += wave) answeredWave(first, wave);
    EXPECT_EQ(packetsByClient().size(), static_cast<size_t>(loaded));
    std::multiset<std::string> delivered, located;
    std::istringstream report(zuvtest::readFile(kReport));
    for (std::string line; std::getline(report, line);)
        if (line.find("\"PhysicalLocation\" : ") != std::string::npos)
            delivered.insert(line.substr(line.rfind(':') + 3, 16));
    for (int i = 0; i < loaded; i += 3) located.insert(payloadOf(i).substr(4));
    EXPECT_EQ(delivered, located);

    // The service dies in the middle of a wave, and a new one takes its pipe over.
    launch(loaded, wave);
    ASSERT_TRUE(
        zuvtest::eventually([&] { return packetsByClient().size() >= static_cast<size_t>(loaded + 10); }, 30000));
    service.stop();
    startService(options);
    answeredWave(loaded + wave, wave);
    // Each of the killed wave was answered, or waits for ever (and leaves its pipe), or was cut short.
    grace = 3000;  // by now they have ended, but for those that wait for ever
    for (int i = loaded; i < loaded + wave; ++i) {
        const int status = ended(i);
        const bool cut =
            status == 128 + SIGPIPE || (status == 1 && zuvtest::readFile(outputOf(i, ".err")) ==
                                                           "zuvCli Error: Failed to read the reply of ZUV service.\n");
        const bool waits =
            status < 0 && zuvtest::fileExists(replyPipeOf(clients.at(i).pid()));  // in the open of its pipe
        EXPECT_TRUE(waits || answered(i, status) || cut) << i << " ended with " << status;
    }
}

#ifdef ZUV_VALGRIND  // none in a sanitizer build
TEST_F(Service, ZuvCliLeavesNothingButTheLoggerUnderMemcheck) {
    const std::string event = R"({"EventTime":"2026-11-18T10:36:45Z","HostName":"esx1","ID":708,"IPv4Addresses":)"
                              R"(["10.0.0.5"],"OSType":"VMware ESXi","OSVersion":"8.0.2","Source":"HostOS"})";
    zuvtest::writeFile("/tmp/event.json", event);
    startService({});
    setenv("VALGRIND_OPTS", "--error-exitcode=99 --leak-check=full --errors-for-leak-kinds=all", 1);
    const std::pair<Args, std::string> cases[] = {
        {{"-t", "708", "-l", "ABCDEFGHIJKLMNOP"}, kSent},
        {{"-f", "/tmp/event.json"}, kSent},
        {{"-j", "/tmp/inv.json"}, kSaved},
        {{"-t", "1"}, ""},  // a failing check: status 1
        {{}, "Usage:\n"},
    };
    for (const auto& [args, out] : cases) {
        Args argv{ZUV_VALGRIND, "--suppressions=" ZUV_VALGRIND_SUPPRESSIONS, ZUV_CLI_PATH};
        argv.insert(argv.end(), args.begin(), args.end());
        const auto result = zuvtest::runProcess(argv, 120000);
        EXPECT_EQ(result.exitStatus, out.empty() ? 1 : 0)
            << ::testing::PrintToString(args) << result.err;  // 99: memcheck
        EXPECT_EQ(result.out.substr(0, out.size()), out) << ::testing::PrintToString(args);
    }
}
#endif

}  // namespace
