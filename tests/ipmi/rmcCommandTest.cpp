// Named RMC commands in 60-byte blocks, each checked by the simulated RMC (index echo, zero fill, length, NUL).
#include "ipmiTestRig.h"

#include <cstring>

namespace {
std::string text(size_t n) {
    std::string t;
    while (t.size() < n) t.push_back(static_cast<char>('A' + t.size() % 26));
    return t;
}
const std::string kStatus3 = "ERROR Transfer Status is 0x3[Error in index] and Cmd Exit Status is 0x1";
}  // namespace

// A command goes out in blocks of 33, then 57 argument bytes; the last status above two is
// reported. deliverData calls back 0 after the pause when all blocks went out, whatever the RMC
// said, and -1 when a block failed: then no block follows and the next command starts afresh.
TEST_F(IpmiTest, CommandGoesOutInBlocksDeliverDataCallsBackWithoutRaisingAndStatusesAreReported) {
    const std::string done = "DEBUG Delivered Data through IPMI", lost = "DEBUG Failed to deliver data through IPMI";
    const std::string block = "DEBUG Transfer data through IPMI: rq [60 3a 80 00]; rp [4]\n";
    const std::string failed = kSendFailed + "ERROR RMC Cli Command Execution failed\n";
    const std::string refused =
        "ERROR Provided command / arguments is not valid\nERROR RMC Cli Command Execution failed\n"
        "DEBUG Error occurred while executing RMC_CLI_Exec status=0, cmd_exit_status=0\n";
    // Name, argument, (status, exit status) of each reply, good sends before one fails, a callback that raises
    // on its first call (1) or none (-1), blocks sent, the callback's results/pauses before each, log.
    using Replies = std::vector<std::pair<uint8_t, uint8_t>>;
    const std::tuple<std::string, std::string, Replies, int, int, size_t, std::string, std::string> cases[] = {
        {"WriteAppTelemetry", "", {}, 99, 0, 1, "0/1 ", block + done},
        {"WriteAppTelemetry", text(33), {}, 99, 0, 2, "0/1 ", done},
        {"WriteAppTelemetry", text(4095), {}, 99, 0, 73, "0/1 ", done},
        {"ABCDEFGHIJKLMNOPQRS", "x", {}, 99, 0, 1, "0/1 ", done},
        {"MPEventGen", std::string("ab\0cd", 5), {}, 99, 0, 1, "0/1 ", done},
        {"MPEventGen", text(100), {{0x42, 0x43}, {3, 1}, {2, 6}}, 99, 0, 3, "0/1 ", kStatus3 + "\n" + done},
        {"MPEventGen", text(100), {}, 99, 1, 3, "0/1 -1/1 ", done + "\n" + lost},
        {"MPEventGen", text(100), {}, 99, -1, 3, "", done},
        {"MPEventGen", text(100), {{0xDD, 0}}, 1, 0, 2, "-1/0 ", failed + "ERROR Command time out.\n" + lost},
        {"WriteTelemetryLongNa", "x", {}, 99, 0, 0, "-1/0 ", refused + lost},
    };
    for (const auto& [name, argument, replies, goodSends, raises, blocks, calls, log] : cases) {
        SCOPED_TRACE(name + " " + std::to_string(argument.size()) + " " + log);
        reset();
        rmc->scriptBlockReplies(replies);
        device->failNext(Step::Send, 1, goodSends);
        std::string results;
        std::function<void(int)> completion = [&](int result) {
            results += std::to_string(result) + "/" + std::to_string(device->sleeps().size()) + " ";
            if (raises == 1 && result == 0) throw std::runtime_error("callback");
        };
        service->deliverData(name, argument, raises < 0 ? nullptr : completion);
        EXPECT_EQ(std::make_tuple(device->sent().size(), results, logged(lost + "\n" + log)),
                  std::make_tuple(blocks, calls, log));
        if (calls.rfind("-1", 0) != 0) {  // delivered
            // Bytes behind an embedded NUL go out as zeros; the length still counts them.
            Bytes sentArgument(argument.size() + 1, 0);
            std::memcpy(sentArgument.data(), argument.c_str(), std::strlen(argument.c_str()));
            const zuvsim::AssembledCommand command = rmc->commands().at(0);
            EXPECT_EQ(std::make_tuple(rmc->commands().size(), command.name, command.argument, command.faults),
                      std::make_tuple(1u, name, sentArgument, Lines{}));
        }
        service->execCommand("WriteTelemetry", "next");
        EXPECT_EQ(std::make_tuple(rmc->commands().back().complete, rmc->commands().back().faults),
                  std::make_tuple(true, Lines{}));
    }
    EXPECT_EQ(thrown([&] { service->execCommand("ABCDEFGHIJKLMNOPQRST", "x"); }), "std::exception: std::exception");
    // Status, exit status, whether the transfer failed, and the line of the table for the end or for a failure.
    const std::tuple<int, int, bool, std::string> statuses[] = {
        {0, 0, false, ""},
        {1, 2, false, "ERROR Transfer Status is 0x1[Input data is not complete] and Cmd Exit Status is 0x2"},
        {3, 1, false, kStatus3},
        {4, 0, false, "ERROR Transfer Status is 0x4[Cli entries full] and Cmd Exit Status is 0x0"},
        {5, 1, false, "ERROR Transfer Status is 0x5[Provided command not supported] and Cmd Exit Status is 0x1"},
        {6, 0, false, "ERROR Transfer Status is 0x6[Memory could not be allocated] and Cmd Exit Status is 0x0"},
        {8, 0xff, false, "ERROR Transfer Status is 0x8[Request command length exceeded] and Cmd Exit Status is 0xff."},
        {7, 3, false, "DEBUG RMC Cli Command Execution failed! (0x7, 0x3)"},
        {7, 0, true, "ERROR Request ioctl failure"},
        {8, 0, true, "ERROR Response ioctl failure"},
        {0xAA, 0, true, "ERROR The pointer to the stdout or stderr is NULL."},
        {0xDD, 0, true, "ERROR Command time out."},
        {0xEE, 0, true, "ERROR The size of stdout or stderr is not enough."},
        {5, 6, true, "DEBUG Error occurred while executing RMC_CLI_Exec status=5, cmd_exit_status=6"},
    };
    for (const auto& [status, exitStatus, failed, line] : statuses) {
        SCOPED_TRACE(line);
        zuvtest::clearLogs();
        zuvIPMIService::reportStatus(uint8_t(status), uint8_t(exitStatus), failed);
        EXPECT_EQ(logged("", "ZUV_IPMI_SERVICE", true), line);
    }
}
