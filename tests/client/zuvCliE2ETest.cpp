// zuvCli end to end against the simulated service, in the sandbox: lines, exit status, packets sent, pipes left.
#include "zuvProcess.h"
#include "zuvSandbox.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <sstream>

namespace {

using Args = std::vector<std::string>;
const char* const kRecord = "/tmp/service-record.txt";

Args split(const std::string& text, char by) {
    Args parts;
    std::istringstream in(text);
    for (std::string part; std::getline(in, part, by);) parts.push_back(part);
    return parts;
}

// What the service received, "|<tag> <type in hex> <payload>" a packet.
std::string packets() {
    std::ostringstream all;
    for (const std::string& line : split(zuvtest::fileExists(kRecord) ? zuvtest::readFile(kRecord) : "", '\n')) {
        std::string bytes;
        for (const std::string& word : split(line.substr(7), ' ')) bytes += char(std::stoi(word, nullptr, 16));
        all << '|' << int(bytes[0]) << ' ' << std::hex << (bytes[3] | bytes[4] << 8) << ' ' << bytes.substr(17);
    }
    return all.str();
}

TEST(Cli, EachRequestGivesItsLineStatusAndPackets) {
    // clang-format off
    // "-": no file, no service. Service options blank-separated, arguments '|'-separated. Status -1: still waiting after
    // two seconds. err: behind "zuvCli Error: ". sent: "|<tag> <type> <payload>".
    struct Case { std::string config, service, args; int status; std::string out, err, sent; size_t pipesLeft = 0; };
    const auto ev = [](const std::string& id, const std::string& extra = "") { return R"({"EventTime":"2026-11-18T10:36:45Z","HostName":"esx1","ID":)" + id + R"(,"IPv4Addresses":["10.0.0.5"],"OSType":"VMware ESXi","OSVersion":"8.0.2","Source":"HostOS")" + extra + "}"; };
    const std::string pad = ev("708", R"(,"Pad":"")"), L = "ABCDEFGHIJKLMNOP";  // padded in a member, so that trims keep the size
    const std::string exact = ev("708", R"(,"Pad":")" + std::string(4096 - pad.size(), 'a') + "\""), over = ev("708", R"(,"Pad":")" + std::string(4097 - pad.size(), 'a') + "\"");
    const std::string fc = ev("383", R"(,"PhysicalLocation":"x")"), F = R"({"CliMode":"full","EnableResources":["HostOSInfo","FibreChannelDevices"],"a":1})", T = R"({"CliMode":"test","a":1})";
    for (const auto& file : {std::pair<std::string, std::string>{"/tmp/exact.json", exact}, {"/tmp/over.json", over}, {"/tmp/fc.json", fc}, {"/tmp/empty.json", ""}, {"/opt/kelzuv/plain", ""}})
        zuvtest::writeFile(file.first, file.second);
    const std::string sent = "ZUVCli: Test Event sent to RMC. Please check logs for details.\n", saved = "ZUVCli: ZUV inventory saved to given file.\n";
    const std::string usage = "Usage:\nzuvCli [-t|--test-event eventid] [-l|--physical-location physicallocation] [-p|--json-packet jsonpacket] [-f|--json-file jsonfilename] [-j|--json-inventory filename] [-h]\n";
    const std::string noConfig = "Config Uninitlized : will use the default configurations", extra = " --behave all=extra";
    const std::string badFormat = "Unable to send TEST EVENT due to invalid format of json string. Error: ", notSaved = "ZUVCli: Unable to save ZUV inventory to given file.";
    const Case cases[] = {
        {F, "", "", 0, usage, "", ""}, {F, "", "extra", 0, "", "", ""},
        {F, "", "-x", 1, "", "Option 120 invalid: ignored", ""}, {F, "", "--help=x", 1, "", "Option 104 invalid: ignored", ""},
        {F, "", "-v", 1, "", "Option provided is invalid: ignored", ""},  // this C library's optopt starts at 0
        {F, "", "-t", 1, "", "Option 116 requires an argument", ""}, {F, "", "-j|   ", 1, "", "Inventory JSON file name cannot be empty", ""},
        {F, "", "-t|708|-l|ABC", 1, "", "Invalid physical location. Physical location must be of 16 characters.", ""}, {F, "", "-l|" + L + "|-t|708", 1, "", "Option '-l' should follow option '-t'.", ""},
        {T, "", "--he", 0, "Usage:\nzuvCli [-t|--test-event eventid] [-h|--help] [-j|--json-inventory filename]\n", "", ""},
        {"-", "-", "", 1, "", noConfig, ""}, {"-", "-", "-t|708", 1, "", noConfig, ""},
        {"-", "-", "-j|a.json", 1, "", noConfig, ""}, {R"({"CliMode":"full","ZUVLogLocation":"/opt/kelzuv/plain/x/zuv.log"})", "", "-j|a.json", 246, "", "", ""},
        {R"({"CliMode":"full","DebugLogLocation":"/opt/kelzuv/plain/y/dbg.log"})", "", "-t|708", 245, "", "", ""},
        {F, "", "-t| 708 |-l| " + L + " |-l|QRSTUVWXYZ012345", 0, sent, "", "|9 102 708 " + L + " QRSTUVWXYZ012345"},
        {F, "", "-t|\t\v\f708\r\n", 0, sent, "", "|9 102 708"}, {F, "", "-t|708|-l|" + L + "|-t|0708", 0, sent, "", "|9 102 0708"},
        {T, "", "-t|708|-l|" + L, 0, sent, "", "|9 102 708 " + L}, {F, "", "-t|708abc", 0, sent, "", "|9 102 708abc"},
        {F, "", "-t|708|-j|inv.json|--test-event=708|-h|--json-inv|b.json", 0, saved + usage + saved + sent, "", "|9 103 inv.json|9 103 b.json|9 102 708"},
        {F, "", "-t|356", 0, sent, "", "|9 102 356"},  // HostOSInfo is enabled
        {F, "", "-t|abc", 1, "", "Please provide valid EVENTID to zuvCli.", ""}, {F, "", "-t|99999999999", 1, "", "Please provide valid EVENTID to zuvCli.", ""},
        {T, "", "-t|356", 1, "", "Please provide valid EVENTID to zuvCli.", ""}, {F, "", "-t|678", 1, "", "The resource manager for given EVENTID is not enabled.", ""},
        {F, "", "-t|1150", 1, "", "Please enter a valid EVENTID to zuvCli.", ""},
        {T, "", "-p|" + ev("708"), 1, "", "Invalid option", ""}, {T, "", "-f|/tmp/exact.json", 1, "", "Invalid option", ""},
        {F, "", "-p|" + ev("4294968004"), 0, sent, "", "|9 100 " + ev("4294968004")},  // 2^32 + 708
        {F, "", "-p|" + exact, 0, sent, "", "|9 100 " + exact}, {F, "", "-f|/tmp/exact.json", 0, sent, "", "|9 101 " + exact},
        {F, "", "-f|/tmp/fc.json", 0, sent, "", "|9 101 " + fc}, {F, "", "-p|{}", 1, "", badFormat, ""},
        {F, "", "-p|" + over, 1, "", "Failed to process JSON payload! Error = (Too large)", ""}, {F, "", "-f|/tmp/over.json", 1, "", "Failed to process JSON file! Error = (Too large), filename = /tmp/over.json", ""},
        {F, "", "-f|/tmp/none.json", 1, "", "Failed to open JSON file!, filename = /tmp/none.json", ""}, {F, "", "-f|/dev/zero", 1, "", "Failed to process JSON file! Error = (Too large), filename = /dev/zero", ""},
        {F, "", "-f|/tmp/empty.json", 1, "", badFormat + "* Line 1, Column 1\n  Syntax error: value, object or array expected.\n", ""}, {F, "", "-f|/tmp", 1, "", "Failed to open JSON file!, filename = /tmp", ""},
        {F, "", "-p|" + std::string(1100, '['), 1, "", badFormat + "Exceeded stackLimit in readValue().", ""},  // deeper than the parser goes
        {F, "", R"(-p|{"ID":708})", 1, "", "Unable to send TEST EVENT as json string is incomplete", ""}, {F, "", "-p|" + ev("1150"), 1, "", "Failed to send zuvCli event as the corresponding resource manager is not running", ""},
        {F, "", "-p|" + ev("383"), 1, "", "Failed to send TEST EVENT as json string is incomplete. PhysicalLocation is missing", ""},
        {F, "", "-p|" + ev("678"), 1, "", "Failed to send zuvCli event as the corresponding resource manager is not running", ""},  // the manager is checked before the location
        {F, "", "-p|[1,2,3]", 1, "", "Unable to send TEST EVENT as json string has members of the wrong type. Error: in Json::Value::find(begin, end): requires objectValue or nullValue", ""}, {F, "", "-p|" + ev(R"("708")"), 1, "", "Unable to send TEST EVENT as json string has members of the wrong type. Error: Value is not convertible to UInt64.", ""},
        // Replies: the code picks the line and bytes behind it are ignored; what can't be read fails.
        {F, "--answer 0x0103=-1" + extra, "-j|a.json", 0, notSaved + " Inventory not ready.\n", "", "|9 103 a.json"}, {F, "--answer 0x0103=-2" + extra, "-j|a", 0, notSaved + " Unable to open file for writing.\n", "", "|9 103 a"},
        {F, "--answer 0x0103=7" + extra, "-j|a.json", 0, notSaved + "\n", "", "|9 103 a.json"}, {F, "-", "-t|708", 1, "", "Failed to communicate with ZUV service. Please verify that ZUV is running and that zuvCli is run with administrator privileges.", ""},
        {F, "--answer 0x0102=5" + extra, "-t|708", 0, "ZUVCli: Test Event couldn't be sent to RMC. Please check logs for details.\n", "", "|9 102 708"},
        {F, "--behave all=short", "-j|a.json", 1, "", "Invalid reply from ZUV service: fewer than four payload bytes.", "|9 103 a.json"}, {F, "--behave all=empty", "-j|a.json", 1, "", "Failed to read the reply of ZUV service.", "|9 103 a.json"},
        {F, "--behave all=silent", "-t|708", -1, "", "", "|9 102 708", 1},  // no time-out: killed, it leaves its reply pipe
        // A process whose id comes up again finds a pipe under it and fails before it sends; the pipe is not its own.
        {F, "", "/bin/sh|-c|mkfifo /var/run/kelzuvcli$$ && exec $CLI -t 708", 1, "", "/var/run/kelzuvcli creation failed", "", 1},
    };
    // clang-format on
    setenv("CLI", ZUV_CLI_PATH, 1);  // for the shell's command line
    for (const Case& c : cases) {
        const std::string row = c.args.substr(0, 60) + " (" + c.service + ") " + c.config.substr(0, 40);
        c.config == "-" ? (void)unlink("/opt/kelzuv/vital/zuv.conf") : zuvtest::writeConfig(c.config);
        unlink(kRecord);
        zuvtest::BackgroundProcess service;
        if (c.service != "-")
            service.start(split(ZUV_SIM_SERVICE_PATH " --record " + std::string(kRecord) + " " + c.service, ' '));
        ASSERT_TRUE(c.service == "-" || zuvtest::waitForPath("/var/run/kelzuv")) << row;
        Args argv = split(c.args, '|');
        if (argv.empty() || argv[0][0] != '/') argv.insert(argv.begin(), ZUV_CLI_PATH);
        const zuvtest::ProcessResult result = zuvtest::runProcess(argv, c.status == -1 ? 2000 : 10000);
        service.stop();
        unlink("/var/run/kelzuv");
        EXPECT_EQ(std::to_string(result.exitStatus) + " " + result.out, std::to_string(c.status) + " " + c.out) << row;
        EXPECT_EQ(result.err, c.err.empty() ? "" : "zuvCli Error: " + c.err + "\n") << row;
        EXPECT_EQ(packets(), c.sent) << row;
        size_t left = 0;
        for (const auto& entry : std::filesystem::directory_iterator("/run"))
            left +=
                entry.path().filename().string().rfind("kelzuvcli", 0) == 0 && std::filesystem::remove(entry.path());
        EXPECT_EQ(left, c.pipesLeft) << row;
    }
}

}  // namespace
