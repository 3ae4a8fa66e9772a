// zuvCli end to end: option scan, conversation bytes, printed lines, exit statuses, reply pipes.
#include "cliFixture.h"

#include <signal.h>
#include <unistd.h>

namespace {

const char* const kSent = "ZUVCli: Test Event sent to RMC. Please check logs for details.\n";
const char* const kNotSent = "ZUVCli: Test Event couldn't be sent to RMC. Please check logs for details.\n";
const char* const kFullUsage =
    "Usage:\nzuvCli [-t|--test-event eventid] [-l|--physical-location physicallocation] "
    "[-p|--json-packet jsonpacket] [-f|--json-file jsonfilename] [-j|--json-inventory filename] [-h]\n";
const char* const kTestUsage = "Usage:\nzuvCli [-t|--test-event eventid] [-h|--help] [-j|--json-inventory filename]\n";

using Args = std::vector<std::string>;

TEST_F(CliFixture, ScanFailuresAndUsageNeedNoService) {
    struct Case {
        Args args;
        int status;
        std::string out;
        std::string err;
    };
    const Case cases[] = {
        {{}, 0, kFullUsage, ""},
        {{"extra"}, 0, "", ""},
        {{"-x"}, 1, "", "zuvCli Error: Option 120 invalid: ignored\n"},
        // -v passes the scanner and leaves optopt as it stood: 0 at the start with this C library.
        {{"-v"}, 1, "", "zuvCli Error: Option provided is invalid: ignored\n"},
        {{"-x", "-v"}, 1, "", "zuvCli Error: Option 120 invalid: ignored\n"},
        {{"--bogus"}, 1, "", "zuvCli Error: Option provided is invalid: ignored\n"},
        {{"--help=x"}, 1, "", "zuvCli Error: Option 104 invalid: ignored\n"},
        {{"-t"}, 1, "", "zuvCli Error: Option 116 requires an argument\n"},
        {{"--test-event"}, 1, "", "zuvCli Error: Option 116 requires an argument\n"},
        {{"-h", "-x"}, 1, kFullUsage, "zuvCli Error: Option 120 invalid: ignored\n"},
        {{"-j", "   "}, 1, "", "zuvCli Error: Inventory JSON file name cannot be empty\n"},
        {{"-t", "708", "-l", "ABC"},
         1,
         "",
         "zuvCli Error: Invalid physical location. Physical location must be of 16 characters.\n"},
        {{"-l", "ABCDEFGHIJKLMNOP", "-t", "708"}, 1, "", "zuvCli Error: Option '-l' should follow option '-t'.\n"},
    };
    for (const Case& c : cases) {
        const auto result = cli(c.args);
        std::string shown;
        for (const auto& a : c.args) shown += a + " ";
        EXPECT_EQ(result.exitStatus, c.status) << shown;
        EXPECT_EQ(result.out, c.out) << shown;
        EXPECT_EQ(result.err, c.err) << shown;
    }
    EXPECT_TRUE(replyPipesLeft().empty());
    zuvtest::writeConfig(kTestModeConfig);
    EXPECT_EQ(cli({}).out, kTestUsage);
    EXPECT_EQ(cli({"--he"}).out, kTestUsage);  // a unique abbreviation
}

TEST_F(CliFixture, MissingConfigurationEndsEveryPathWithStatusOne) {
    unlink("/opt/kelzuv/vital/zuv.conf");
    for (const Args& args : {Args{}, Args{"-t", "708"}, Args{"-h"}}) {
        const auto result = cli(args);
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_EQ(result.err, "zuvCli Error: Config Uninitlized : will use the default configurations\n");
    }
}

TEST_F(CliFixture, TestEventPacketIsSentByteForByteAfterTheScan) {
    startService();
    const auto result = cli({"-t", " 708 ", "-l", " ABCDEFGHIJKLMNOP ", "-l", "QRSTUVWXYZ012345"});
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.out, kSent);
    const auto all = packets();
    ASSERT_EQ(all.size(), 1u);
    const auto& packet = all[0];
    const std::string payload = "708 ABCDEFGHIJKLMNOP QRSTUVWXYZ012345";
    ASSERT_EQ(packet.size(), 17 + payload.size());
    EXPECT_EQ(packet[0], 9);
    EXPECT_EQ(messageTypeOf(packet), 0x0102);
    EXPECT_EQ(u32At(packet, 5), payload.size());
    EXPECT_NE(u32At(packet, 9), 0u);  // the client's pid
    EXPECT_NE(u32At(packet, 9), static_cast<uint32_t>(getpid()));
    EXPECT_EQ(std::string(packet.begin() + 17, packet.end()), payload);
    EXPECT_TRUE(replyPipesLeft().empty());
}

TEST_F(CliFixture, ConversationsRunInScanOrderWithTheTestEventLast) {
    startService();
    const auto result = cli({"-t", "708", "-j", "inv.json", "--test-event=708", "-h", "--json-inv", "b.json"});
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.out, std::string("ZUVCli: ZUV inventory saved to given file.\n") + kFullUsage +
                              "ZUVCli: ZUV inventory saved to given file.\n" + kSent);
    const auto all = packets();
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(messageTypeOf(all[0]), 0x0103);
    EXPECT_EQ(payloads(), (std::vector<std::string>{"inv.json", "b.json", "708"}));
    EXPECT_EQ(messageTypeOf(all[2]), 0x0102);
}

TEST_F(CliFixture, ResultCodesChooseThePrintedLineAndStatusStaysZero) {
    struct Case {
        std::string answer;
        Args args;
        std::string out;
    };
    const Case cases[] = {
        {"0x0103=-1", {"-j", "a.json"}, "ZUVCli: Unable to save ZUV inventory to given file. Inventory not ready.\n"},
        {"0x0103=-2",
         {"-j", "a.json"},
         "ZUVCli: Unable to save ZUV inventory to given file. Unable to open file for writing.\n"},
        {"0x0103=7", {"-j", "a.json"}, "ZUVCli: Unable to save ZUV inventory to given file.\n"},
        {"0x0102=5", {"-t", "708"}, kNotSent},
        {"0x0102=0", {"-t", "0708"}, kSent},
    };
    for (const Case& c : cases) {
        startService({"--answer", c.answer, "--behave", "all=extra"});  // bytes behind the code are ignored
        const auto result = cli(c.args);
        EXPECT_EQ(result.exitStatus, 0) << c.answer;
        EXPECT_EQ(result.out, c.out) << c.answer;
        service.stop();
    }
    EXPECT_TRUE(replyPipesLeft().empty());
}

TEST_F(CliFixture, InventoryFileNameReachesTheServiceAsTyped) {
    startService({"--inventory-json", R"({"Inventory":1})"});
    auto result = cli({"-j", " /tmp/inv.json "});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.out, "ZUVCli: ZUV inventory saved to given file.\n");
    EXPECT_EQ(zuvtest::readFile("/tmp/inv.json"), R"({"Inventory":1})");
    result = cli({"--json-inventory", "/tmp/no-such-dir/inv.json"});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.out, "ZUVCli: Unable to save ZUV inventory to given file. Unable to open file for writing.\n");
    EXPECT_EQ(payloads(), (std::vector<std::string>{"/tmp/inv.json", "/tmp/no-such-dir/inv.json"}));
}

TEST_F(CliFixture, BrokenConversationsFailWithoutLeavingAReplyPipe) {
    // No service pipe at all: the send fails at once.
    auto result = cli({"-t", "708"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.err,
              "zuvCli Error: Failed to communicate with ZUV service. Please verify that ZUV is running and that "
              "zuvCli is run with administrator privileges.\n");
    EXPECT_TRUE(replyPipesLeft().empty());

    const std::pair<std::string, std::string> cases[] = {
        {"short", "zuvCli Error: Invalid reply from ZUV service: fewer than four payload bytes.\n"},
        {"empty", "zuvCli Error: Failed to read the reply of ZUV service.\n"},
    };
    for (const auto& c : cases) {
        startService({"--behave", "all=" + c.first});
        result = cli({"-j", "a.json"});
        EXPECT_EQ(result.exitStatus, 1) << c.first;
        EXPECT_EQ(result.out, "") << c.first;
        EXPECT_EQ(result.err, c.second) << c.first;
        EXPECT_TRUE(replyPipesLeft().empty()) << c.first;
        service.stop();
    }
}

TEST_F(CliFixture, ClientWaitsForAnAnswerAndALeftOverPipeBlocksTheNextConversation) {
    startService({"--behave", "all=silent"});
    zuvtest::BackgroundProcess client({ZUV_CLI_PATH, "-t", "708"});
    ASSERT_TRUE(zuvtest::waitForPath("/var/run/kelzuvcli" + std::to_string(client.pid())));
    EXPECT_EQ(client.wait(300), -1) << "the client must wait for the answer";
    client.stop();  // a killed client leaves its reply pipe behind
    EXPECT_EQ(replyPipesLeft().size(), 1u);
    service.stop();

    // A process whose id comes up again finds that pipe and fails before sending anything; the
    // pipe is not its own and stays. The shell makes the pipe under its own id and then becomes zuvCli.
    for (const std::string& pipe : replyPipesLeft()) unlink(pipe.c_str());
    startService();
    const size_t packetsBefore = packets().size();
    const auto result = zuvtest::runProcess(
        {"/bin/sh", "-c", std::string("mkfifo /var/run/kelzuvcli$$ && exec ") + ZUV_CLI_PATH + " -t 708"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.err, "zuvCli Error: /var/run/kelzuvcli creation failed\n");
    EXPECT_EQ(packets().size(), packetsBefore);
    EXPECT_EQ(replyPipesLeft().size(), 1u);
}

TEST_F(CliFixture, StoreAndChannelLinesReachSyslog) {
    zuvtest::writeConfig(
        R"({"CliMode":"full","EnableDebugLog":true,"DebugLogLocation":"syslog","ZUVLogLocation":"syslog"})");
    startService();
    zuvtest::SyslogCollector syslogLines;
    ASSERT_EQ(cli({"-t", "708"}).exitStatus, 0);
    std::vector<std::string> messages;
    for (const auto& line : syslogLines.lines())
        if (line.ident == "zuv") messages.push_back(line.message);
    // The client's own lines (the service logs through the same socket, but its pid differs
    // and its lines come from reads; pick the client's by content).
    auto has = [&](const std::string& text) {
        for (const auto& m : messages)
            if (m == text) return true;
        return false;
    };
    EXPECT_TRUE(has("ZUV_CONFIG_INITIALIZING 10"));
    EXPECT_TRUE(has("Parse Successful 0"));
    EXPECT_TRUE(has("ZUV_DEBUG_LOG_ENABLE 5-1-1"));  // JSON type 5 is bool
    bool sawPipeCreation = false;
    for (const auto& m : messages) {
        if (m.rfind("[DEBUG]   ", 0) == 0 &&
            m.find(" ZUV_MSGINFRA: Creation of Pipe /var/run/kelzuvcli") != std::string::npos && m.back() == '\n')
            sawPipeCreation = true;
    }
    EXPECT_TRUE(sawPipeCreation);
}

}  // namespace
