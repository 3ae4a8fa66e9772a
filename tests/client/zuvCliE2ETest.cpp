// zuvCli end to end against the simulated service, in the sandbox: lines, exit status, packets sent, pipes left.
#include "zuvProcess.h"
#include "zuvSandbox.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <map>
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

const std::string kFull = R"({"CliMode":"full","EnableResources":["HostOSInfo","FibreChannelDevices"],"a":1})";
const std::string kTest = R"({"CliMode":"test","a":1})";
const std::string kSent = "ZUVCli: Test Event sent to RMC. Please check logs for details.\n";
const std::string kSaved = "ZUVCli: ZUV inventory saved to given file.\n";
const std::string kNotSaved = "ZUVCli: Unable to save ZUV inventory to given file.";
const std::string kUsage =
    "Usage:\nzuvCli [-t|--test-event eventid] [-l|--physical-location physicallocation] [-p|--json-packet jsonpacket] "
    "[-f|--json-file jsonfilename] [-j|--json-inventory filename] [-h]\n";
const std::string kNoConfig = "Config Uninitlized : will use the default configurations";
const std::string kInvalidId = "Please provide valid EVENTID to zuvCli.";
const std::string kBadFormat = "Unable to send TEST EVENT due to invalid format of json string. Error: ";
const std::string kWrongType = "Unable to send TEST EVENT as json string has members of the wrong type. Error: ";
const std::string kNotRunning = "Failed to send zuvCli event as the corresponding resource manager is not running";
const std::string kNoService =
    "Failed to communicate with ZUV service. Please verify that ZUV is running and that zuvCli is run with "
    "administrator privileges.";
const std::string kLocation = "ABCDEFGHIJKLMNOP";

std::string event(const std::string& id, const std::string& extra = "") {
    return R"({"EventTime":"2026-11-18T10:36:45Z","HostName":"esx1","ID":)" + id +
           R"(,"IPv4Addresses":["10.0.0.5"],"OSType":"VMware ESXi","OSVersion":"8.0.2","Source":"HostOS")" + extra +
           "}";
}

std::string eventOfSize(size_t size) {  // Fibre Channel's, with its location; padded in a member, which trims keep
    const std::string members = R"(,"PhysicalLocation":"x","Pad":")";
    return event("383", members + std::string(size - event("383", members + "\"").size(), 'a') + "\"");
}

// Arguments '|'-separated. Status -1: still waiting after two seconds. err: behind "zuvCli Error: ". sent:
// "|<tag> <type> <payload>". Service options blank-separated, "-" for no service; config "-" for no file.
struct Case {
    std::string args;
    int status;
    std::string out, err, sent, service = "", config = kFull;
    size_t pipesLeft = 0;
};

// A request refused before anything is sent.
Case fails(const std::string& args, const std::string& err, const std::string& config = kFull) {
    return {args, 1, "", err, "", "", config};
}

// A test event the service takes.
Case sends(const std::string& args, const std::string& sent, const std::string& config = kFull) {
    return {args, 0, kSent, "", sent, "", config};
}

TEST(Cli, EachRequestGivesItsLineStatusAndPackets) {
    const std::string exact = eventOfSize(4096), over = eventOfSize(4097);
    const std::string extra = " --behave all=extra";  // bytes behind the reply's code
    for (const auto& [path, text] : std::map<std::string, std::string>{
             {"/tmp/exact.json", exact}, {"/tmp/over.json", over}, {"/tmp/empty.json", ""}})
        zuvtest::writeFile(path, text);
    zuvtest::writeFile("/opt/kelzuv/plain", "");
    const Case cases[] = {
        {"", 0, kUsage, "", ""},
        {"extra", 0, "", "", ""},
        fails("-x", "Option 120 invalid: ignored"),
        fails("--help=x", "Option 104 invalid: ignored"),
        fails("-v", "Option provided is invalid: ignored"),  // this C library's optopt starts at 0
        fails("-t", "Option 116 requires an argument"),
        fails("-j|   ", "Inventory JSON file name cannot be empty"),
        fails("-t|708|-l|ABC", "Invalid physical location. Physical location must be of 16 characters."),
        fails("-l|" + kLocation + "|-t|708", "Option '-l' should follow option '-t'."),
        {"--he", 0, "Usage:\nzuvCli [-t|--test-event eventid] [-h|--help] [-j|--json-inventory filename]\n", "", "", "",
         kTest},
        // The logger is built before the reply pipe: no pipe is left when it throws or ends the process.
        {"", 1, "", kNoConfig, "", "-", "-"},
        {"-j|a.json", 1, "", kNoConfig, "", "-", "-"},
        {"-j|a.json", 246, "", "", "", "", R"({"CliMode":"full","ZUVLogLocation":"/opt/kelzuv/plain/x/zuv.log"})"},
        sends("-t|\t\v\f708\r\n |-l| " + kLocation + " |-l|QRSTUVWXYZ012345",
              "|9 102 708 " + kLocation + " QRSTUVWXYZ012345"),
        sends("-t|708|-l|" + kLocation + "|-t|0708", "|9 102 0708"),
        sends("-t|708|-l|" + kLocation, "|9 102 708 " + kLocation, kTest),
        sends("-t|708abc", "|9 102 708abc"),
        {"-t|708|-j|inv.json|--test-event=708|-h|--json-inv|b.json", 0, kSaved + kUsage + kSaved + kSent, "",
         "|9 103 inv.json|9 103 b.json|9 102 708"},
        sends("-t|356", "|9 102 356"),  // HostOSInfo is enabled
        fails("-t|abc", kInvalidId),
        fails("-t|99999999999", kInvalidId),
        fails("-t|356", kInvalidId, kTest),
        fails("-t|678", "The resource manager for given EVENTID is not enabled."),
        fails("-t|1150", "Please enter a valid EVENTID to zuvCli."),
        fails("-p|" + event("708"), "Invalid option", kTest),
        fails("-f|/tmp/exact.json", "Invalid option", kTest),
        sends("-p|" + event("4294968004"), "|9 100 " + event("4294968004")),  // 2^32 + 708
        sends("-p|" + exact, "|9 100 " + exact),
        sends("-f|/tmp/exact.json", "|9 101 " + exact),
        fails("-p|{}", kBadFormat),
        fails("-p|" + over, "Failed to process JSON payload! Error = (Too large)"),
        fails("-f|/tmp/over.json", "Failed to process JSON file! Error = (Too large), filename = /tmp/over.json"),
        fails("-f|/tmp/none.json", "Failed to open JSON file!, filename = /tmp/none.json"),
        fails("-f|/dev/zero", "Failed to process JSON file! Error = (Too large), filename = /dev/zero"),
        fails("-f|/tmp/empty.json",
              kBadFormat + "* Line 1, Column 1\n  Syntax error: value, object or array expected.\n"),
        fails("-f|/tmp", "Failed to open JSON file!, filename = /tmp"),
        fails("-p|" + std::string(1100, '['), kBadFormat + "Exceeded stackLimit in readValue()."),  // too deep to parse
        fails(R"(-p|{"ID":708})", "Unable to send TEST EVENT as json string is incomplete"),
        fails("-p|" + event("1150"), kNotRunning),
        fails("-p|" + event("383"),
              "Failed to send TEST EVENT as json string is incomplete. PhysicalLocation is missing"),
        fails("-p|" + event("678"), kNotRunning),  // the manager is checked before the location
        fails("-p|[1,2,3]", kWrongType + "in Json::Value::find(begin, end): requires objectValue or nullValue"),
        fails("-p|" + event(R"("708")"), kWrongType + "Value is not convertible to UInt64."),
        // Replies: the code picks the line and bytes behind it are ignored; what can't be read fails.
        {"-j|a.json", 0, kNotSaved + " Inventory not ready.\n", "", "|9 103 a.json", "--answer 0x0103=-1" + extra},
        {"-j|a", 0, kNotSaved + " Unable to open file for writing.\n", "", "|9 103 a", "--answer 0x0103=-2" + extra},
        {"-j|a.json", 0, kNotSaved + "\n", "", "|9 103 a.json", "--answer 0x0103=7" + extra},
        {"-t|708", 0, "ZUVCli: Test Event couldn't be sent to RMC. Please check logs for details.\n", "", "|9 102 708",
         "--answer 0x0102=5" + extra},
        {"-t|708", 1, "", kNoService, "", "-"},
        {"-j|a.json", 1, "", "Invalid reply from ZUV service: fewer than four payload bytes.", "|9 103 a.json",
         "--behave all=short"},
        {"-j|a.json", 1, "", "Failed to read the reply of ZUV service.", "|9 103 a.json", "--behave all=empty"},
        // No time-out: killed, the client leaves its reply pipe.
        {"-t|708", -1, "", "", "|9 102 708", "--behave all=silent", kFull, 1},
        // A process whose id comes up again finds a pipe under it and fails before it sends; the pipe is not its own.
        {"/bin/sh|-c|mkfifo /var/run/kelzuvcli$$ && exec $CLI -t 708", 1, "", "/var/run/kelzuvcli creation failed", "",
         "", kFull, 1},
    };
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
