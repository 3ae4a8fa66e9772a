// Named RMC commands in 60-byte blocks: layout, index echo, statuses and their log lines,
// failures in mid-command, and the completion callback of deliverData.
#include "ipmiTestRig.h"

#include <cstring>
#include <typeinfo>

using ipmitest::IpmiTest;
using ipmitest::le16;
using Step = zuvsim::SimulatedRmcDevice::Step;

namespace {

std::string textOfLength(size_t n) {
    std::string text;
    for (size_t i = 0; i < n; ++i) text.push_back(static_cast<char>('A' + i % 26));
    return text;
}

std::vector<zuvsim::Request> blocksOf(const zuvsim::SimulatedRmc& rmc) {
    std::vector<zuvsim::Request> blocks;
    for (const auto& request : rmc.requests())
        if (request.netFn == 0x3A && request.cmd == 0x80) blocks.push_back(request);
    return blocks;
}

}  // namespace

TEST_F(IpmiTest, ArgumentGoesOutInBlocksThatEchoTheReplyIndex) {
    struct Case {
        size_t textLength;  // L is one more
        size_t blocks;
    };
    const std::vector<Case> cases = {{0, 1}, {32, 1}, {33, 2}, {89, 2}, {90, 3}, {146, 3}, {147, 4}, {4095, 73}};
    auto service = makeService();
    for (const Case& c : cases) {
        SCOPED_TRACE("text length " + std::to_string(c.textLength));
        rmc.clearRecord();
        device.clearRecord();
        log.mark();
        const std::string text = textOfLength(c.textLength);
        service->execCommand("WriteAppTelemetry", text);

        const auto commands = rmc.commands();
        ASSERT_EQ(commands.size(), 1u);
        EXPECT_EQ(commands[0].name, "WriteAppTelemetry");
        EXPECT_EQ(commands[0].argumentLength, c.textLength + 1);
        EXPECT_EQ(commands[0].text(), text);
        EXPECT_TRUE(commands[0].complete);
        EXPECT_TRUE(commands[0].faults.empty()) << commands[0].faults.front();

        const auto blocks = blocksOf(rmc);
        ASSERT_EQ(blocks.size(), c.blocks);
        // First block: index 0, name length 20, the name zero-filled, L little-endian.
        std::vector<uint8_t> head(blocks[0].data.begin(), blocks[0].data.begin() + 27);
        std::vector<uint8_t> expected{0, 0, 20};
        const char* name = "WriteAppTelemetry";
        for (size_t i = 0; i < 20; ++i) expected.push_back(i < std::strlen(name) ? static_cast<uint8_t>(name[i]) : 0);
        const uint32_t length = static_cast<uint32_t>(c.textLength + 1);
        for (int shift = 0; shift < 32; shift += 8) expected.push_back(static_cast<uint8_t>(length >> shift));
        EXPECT_EQ(head, expected);
        // Each later block echoes the index of the reply before it; the RMC's indexes run from 0x0100.
        const auto sent = device.sent();
        ASSERT_EQ(sent.size(), c.blocks);
        for (size_t k = 1; k < sent.size(); ++k) {
            EXPECT_EQ(le16(sent[k].data, 0), le16(sent[k - 1].answer.body, 1)) << "block " << k;
            EXPECT_EQ(sent[k].data[2], 0);
        }
        for (const auto& block : sent) EXPECT_EQ(block.dataLen, 60);
        EXPECT_EQ(device.sleeps(), std::vector<uint64_t>{500000}) << "one pause, after the last block";
        EXPECT_TRUE(log.has("DEBUG", "Transfer data through IPMI: rq [60 3a 80 00]; rp [4]"));
        EXPECT_TRUE(log.messages("ERROR").empty());
    }
}

TEST_F(IpmiTest, StatusesAboveTwoAreReportedAfterTheLastBlockAndNeverStopTheTransfer) {
    struct Case {
        const char* name;
        std::vector<std::pair<uint8_t, uint8_t>> replies;  // status, exit status, per block
        std::string level;                                 // "" for nothing logged
        std::string message;
    };
    const std::vector<Case> cases = {
        {"all good", {{1, 0}, {1, 0}, {0, 0}}, "", ""},
        {"1 and 2 pass silently", {{2, 4}, {1, 5}, {2, 6}}, "", ""},
        {"5 on the first block",
         {{5, 9}, {1, 0}, {0, 0}},
         "ERROR",
         "Transfer Status is 0x5[Provided command not supported] and Cmd Exit Status is 0x9"},
        {"the last status above 2 counts",
         {{3, 1}, {4, 2}, {1, 7}},
         "ERROR",
         "Transfer Status is 0x4[Cli entries full] and Cmd Exit Status is 0x2"},
        {"6",
         {{1, 0}, {1, 0}, {6, 3}},
         "ERROR",
         "Transfer Status is 0x6[Memory could not be allocated] and Cmd Exit Status is 0x3"},
        {"8 ends with a full stop",
         {{1, 0}, {8, 3}, {0, 0}},
         "ERROR",
         "Transfer Status is 0x8[Request command length exceeded] and Cmd Exit Status is 0x3."},
        {"3",
         {{3, 0x10}, {1, 0}, {0, 0}},
         "ERROR",
         "Transfer Status is 0x3[Error in index] and Cmd Exit Status is 0x10"},
        {"unknown status", {{1, 0}, {1, 0}, {0x42, 0x43}}, "DEBUG", "RMC Cli Command Execution failed! (0x42, 0x43)"},
    };
    auto service = makeService();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        rmc.clearRecord();
        device.clearRecord();
        log.mark();
        rmc.scriptBlockReplies(c.replies);
        EXPECT_NO_THROW(service->execCommand("MPEventGen", textOfLength(100)));
        EXPECT_EQ(blocksOf(rmc).size(), 3u) << "every block is sent";
        EXPECT_EQ(device.sleeps().size(), 1u);
        const auto errors = log.messages("ERROR");
        if (c.level == "ERROR") {
            EXPECT_EQ(errors, std::vector<std::string>{c.message});
        } else {
            EXPECT_TRUE(errors.empty());
        }
        if (c.level == "DEBUG") {
            EXPECT_TRUE(log.has("DEBUG", c.message));
        }
        if (c.level.empty()) {
            for (const std::string& line : log.messages("DEBUG"))
                EXPECT_EQ(line.find("RMC Cli Command Execution failed"), std::string::npos) << line;
        }
    }
}

TEST_F(IpmiTest, ReportStatusPicksTheLineOfItsTable) {
    struct Case {
        uint8_t status, exitStatus;
        bool failed;
        std::string level;
        std::string message;
    };
    const std::vector<Case> cases = {
        {0, 0, false, "", ""},
        {1, 2, false, "ERROR", "Transfer Status is 0x1[Input data is not complete] and Cmd Exit Status is 0x2"},
        {3, 0, false, "ERROR", "Transfer Status is 0x3[Error in index] and Cmd Exit Status is 0x0"},
        {4, 0, false, "ERROR", "Transfer Status is 0x4[Cli entries full] and Cmd Exit Status is 0x0"},
        {5, 1, false, "ERROR", "Transfer Status is 0x5[Provided command not supported] and Cmd Exit Status is 0x1"},
        {6, 0, false, "ERROR", "Transfer Status is 0x6[Memory could not be allocated] and Cmd Exit Status is 0x0"},
        {8, 0xff, false, "ERROR",
         "Transfer Status is 0x8[Request command length exceeded] and Cmd Exit Status is 0xff."},
        {2, 1, false, "DEBUG", "RMC Cli Command Execution failed! (0x2, 0x1)"},
        {7, 0, false, "DEBUG", "RMC Cli Command Execution failed! (0x7, 0x0)"},
        {7, 0, true, "ERROR", "Request ioctl failure"},
        {8, 0, true, "ERROR", "Response ioctl failure"},
        {0xAA, 0, true, "ERROR", "The pointer to the stdout or stderr is NULL."},
        {0xDD, 0, true, "ERROR", "Command time out."},
        {0xEE, 0, true, "ERROR", "The size of stdout or stderr is not enough."},
        {0, 0, true, "DEBUG", "Error occurred while executing RMC_CLI_Exec status=0, cmd_exit_status=0"},
        {5, 6, true, "DEBUG", "Error occurred while executing RMC_CLI_Exec status=5, cmd_exit_status=6"},
    };
    ipmitest::ensureLogger();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message);
        log.mark();
        zuvIPMIService::reportStatus(c.status, c.exitStatus, c.failed);
        const auto lines = log.lines();
        if (c.level.empty()) {
            EXPECT_TRUE(lines.empty());
            continue;
        }
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(lines[0].level, c.level);
        EXPECT_EQ(lines[0].tag, "ZUV_IPMI_SERVICE");
        EXPECT_EQ(lines[0].message, c.message);
    }
}

TEST_F(IpmiTest, FailedBlockEndsTheCommandWithAPlainExceptionAndNoPause) {
    struct Case {
        const char* name;
        Step step;
        int goodCalls;  // calls of the step that pass before the failure
        std::vector<std::pair<uint8_t, uint8_t>> replies;
        size_t blocksSent;
        std::string statusLevel;
        std::string statusLine;
    };
    const std::string unknown = "Error occurred while executing RMC_CLI_Exec status=0, cmd_exit_status=0";
    const std::vector<Case> cases = {
        {"send of block 2", Step::Send, 1, {}, 2, "DEBUG", unknown},
        {"wait on block 3", Step::Select, 2, {}, 3, "DEBUG", unknown},
        {"no answer to block 1", Step::SelectNotReady, 0, {}, 1, "DEBUG", unknown},
        {"receive of block 2", Step::Receive, 1, {}, 2, "DEBUG", unknown},
        {"after a time-out status", Step::Send, 2, {{0xDD, 0}, {1, 0}}, 3, "ERROR", "Command time out."},
        {"after status 7", Step::Receive, 1, {{7, 1}}, 2, "ERROR", "Request ioctl failure"},
    };
    auto service = makeService();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        rmc.clearRecord();
        device.clearRecord();
        log.mark();
        rmc.scriptBlockReplies(c.replies);
        device.failNext(c.step, 1, c.goodCalls);
        try {
            service->execCommand("WriteTelemetry", textOfLength(140));
            ADD_FAILURE() << "no exception";
        } catch (const std::exception& e) {
            EXPECT_EQ(typeid(e), typeid(std::exception));
        }
        EXPECT_EQ(device.sent().size(), c.blocksSent) << "no block after the failure, none repeated";
        EXPECT_TRUE(device.sleeps().empty());
        EXPECT_TRUE(log.has("ERROR", "RMC Cli Command Execution failed"));
        EXPECT_TRUE(log.has(c.statusLevel, c.statusLine));

        // The next command starts afresh: index 0 in its first block, all its blocks answered.
        rmc.scriptBlockReplies({});
        rmc.clearRecord();
        service->execCommand("WriteTelemetry", "next");
        const auto blocks = blocksOf(rmc);
        ASSERT_EQ(blocks.size(), 1u);
        EXPECT_EQ(le16(blocks[0].data, 0), 0);
        EXPECT_TRUE(rmc.commands().back().complete);
    }
}

TEST_F(IpmiTest, CommandNamesAndArgumentsAtTheLimits) {
    struct Case {
        std::string name;
        std::string argument;
        bool accepted;
        std::vector<uint8_t> argumentBytes;  // as the RMC reassembled them
    };
    const std::vector<Case> cases = {
        {"ABCDEFGHIJKLMNOPQRS", "x", true, {'x', 0}},
        {"ABCDEFGHIJKLMNOPQRST", "x", false, {}},
        {"", "x", true, {'x', 0}},
        // Bytes behind an embedded NUL go out as zeros; the length still counts them.
        {"MPEventGen", std::string("ab\0cd", 5), true, {'a', 'b', 0, 0, 0, 0}},
    };
    auto service = makeService();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        rmc.clearRecord();
        log.mark();
        if (!c.accepted) {
            EXPECT_THROW(service->execCommand(c.name, c.argument), std::exception);
            EXPECT_TRUE(rmc.requests().empty());
            EXPECT_TRUE(log.has("ERROR", "Provided command / arguments is not valid"));
            EXPECT_TRUE(log.has("ERROR", "RMC Cli Command Execution failed"));
            continue;
        }
        service->execCommand(c.name, c.argument);
        ASSERT_EQ(rmc.commands().size(), 1u);
        EXPECT_EQ(rmc.commands()[0].name, c.name);
        EXPECT_EQ(rmc.commands()[0].argument, c.argumentBytes);
        EXPECT_TRUE(rmc.commands()[0].faults.empty());
    }
}

TEST_F(IpmiTest, DeliverDataReportsThroughItsCallbackAndRaisesNothing) {
    struct Case {
        const char* name;
        bool failSend;
        int throwOn;  // the callback raises when called with this value; 1 for never
        std::vector<std::pair<uint8_t, uint8_t>> replies;
        std::vector<int> calls;
        bool deliveredLine;
    };
    const std::vector<Case> cases = {
        {"delivered", false, 1, {}, {0}, true},
        {"delivered though the RMC refused it", false, 1, {{5, 1}}, {0}, true},
        {"transfer failed", true, 1, {}, {-1}, false},
        {"callback raises on 0", false, 0, {}, {0, -1}, true},
        {"callback raises on both", false, 0 /* and -1 below */, {}, {0, -1}, true},
    };
    auto service = makeService();
    for (size_t i = 0; i < cases.size(); ++i) {
        const Case& c = cases[i];
        SCOPED_TRACE(c.name);
        device.clearRecord();
        log.mark();
        rmc.scriptBlockReplies(c.replies);
        if (c.failSend) device.failNext(Step::Send);
        const bool throwAlways = i == cases.size() - 1;
        std::vector<int> calls;
        std::vector<size_t> pausesSeen;
        auto completion = [&](int result) {
            calls.push_back(result);
            pausesSeen.push_back(device.sleeps().size());
            if (result == c.throwOn || throwAlways) throw std::runtime_error("callback");
        };
        EXPECT_NO_THROW(service->deliverData("MPEventGen", "{\"a\":1}", completion));
        EXPECT_EQ(calls, c.calls);
        if (!calls.empty() && calls[0] == 0) {
            EXPECT_EQ(pausesSeen[0], 1u) << "the pause comes before the callback";
        }
        EXPECT_EQ(log.has("DEBUG", "Delivered Data through IPMI"), c.deliveredLine);
        EXPECT_EQ(log.has("DEBUG", "Failed to deliver data through IPMI"), c.calls.back() == -1);
    }
    // An empty callback is allowed on both paths.
    device.failNext(Step::Send);
    EXPECT_NO_THROW(service->deliverData("MPEventGen", "{}", nullptr));
    EXPECT_NO_THROW(service->deliverData("MPEventGen", "{}", nullptr));
}
