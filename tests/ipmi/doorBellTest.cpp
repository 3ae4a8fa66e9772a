// Doorbell polls: one transfer per kind, the answer read by kind, failures as "nothing to report".
#include "ipmiTestRig.h"

using ipmitest::IpmiTest;
using Step = zuvsim::SimulatedRmcDevice::Step;

namespace {

std::vector<uint8_t> bytesOf(const std::string& text) { return std::vector<uint8_t>(text.begin(), text.end()); }

// 254 bytes without a terminator, ending in the word.
std::vector<uint8_t> fullInventoryAnswer() {
    std::string text(254 - 14, 'x');
    text += "WriteInventory";
    return bytesOf(text);
}

}  // namespace

TEST_F(IpmiTest, DoorBellResultDependsOnKindAndAnswer) {
    struct Case {
        const char* name;
        int kind;
        zuvsim::Response answer;
        int result;
        std::vector<std::string> warnings;
        std::string debugLine;  // "" when not checked
    };
    const std::string full(reinterpret_cast<const char*>(fullInventoryAnswer().data()), 254);
    const std::vector<Case> cases = {
        {"inventory, word alone", DoorBellInventory, {0, bytesOf("WriteInventory")}, 1, {}, ""},
        {"inventory, text around", DoorBellInventory, {0, bytesOf("cmd=WriteInventory;now")}, 1, {}, ""},
        {"inventory, other word", DoorBellInventory, {0, bytesOf("WriteInventor")}, 0, {}, ""},
        {"inventory, nothing", DoorBellInventory, {0, {}}, 0, {}, "Received doorbell string ()"},
        {"inventory, full buffer",
         DoorBellInventory,
         {0, fullInventoryAnswer()},
         1,
         {},
         "Received doorbell string (" + full + ")"},
        {"inventory, code ignored", DoorBellInventory, {0xC1, bytesOf("WriteInventory")}, 1, {}, ""},
        {"telemetry rung",
         DoorBellTelemetry,
         {0, {1, 0, 0, 0, 7}},
         1,
         {},
         "Received Telemetry doorbell string (\x01) cmd (1), cmd_level(7)"},
        {"telemetry idle", DoorBellTelemetry, {0, {0, 0, 0, 0, 3}}, 2, {}, ""},
        {"telemetry empty", DoorBellTelemetry, {0, {}}, 2, {}, ""},
        {"telemetry unsupported",
         DoorBellTelemetry,
         {0, {2, 0, 0, 0, 7}},
         2,
         {"Received Unsupported telemetry doorbell string (\x02) cmd (2), cmd_level(7)"},
         ""},
        {"telemetry high byte",
         DoorBellTelemetry,
         {0, {0, 1, 0, 0, 0}},
         2,
         {"Received Unsupported telemetry doorbell string () cmd (256), cmd_level(0)"},
         ""},
        {"IOFWU requested", DoorBellIOFWU, {0, {1, 0}}, 1, {}, "IOFWU doorbell string (1) (0) "},
        {"IOFWU other value", DoorBellIOFWU, {0, {2, 9}}, 2, {}, "IOFWU doorbell string (2) (9) "},
        {"IOFWU top value", DoorBellIOFWU, {0, {255}}, 255, {}, ""},
        {"IOFWU empty", DoorBellIOFWU, {0, {}}, 0, {}, ""},
    };
    auto service = makeService();
    const uint8_t commands[] = {0, 0x81, 0x82, 0x83};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        device.clearRecord();
        log.mark();
        rmc.pushResponse(0x3A, commands[c.kind], c.answer);
        EXPECT_EQ(service->checkDoorBell(c.kind), c.result);
        const auto sent = device.sent();
        ASSERT_EQ(sent.size(), 1u);
        EXPECT_EQ(sent[0].netFn, 0x3A);
        EXPECT_EQ(sent[0].cmd, commands[c.kind]);
        EXPECT_EQ(sent[0].dataLen, 0);
        EXPECT_TRUE(sent[0].dataPointerNull);
        EXPECT_EQ(log.messages("WARNING"), c.warnings);
        EXPECT_TRUE(log.messages("ERROR").empty());
        EXPECT_TRUE(log.has("DEBUG", "Checking IPMI door bell request"));
        if (!c.debugLine.empty()) {
            EXPECT_TRUE(log.has("DEBUG", c.debugLine)) << c.debugLine;
        }
    }
}

TEST_F(IpmiTest, UnknownDoorBellKindMakesNoTransfer) {
    auto service = makeService();
    for (int kind : {0, 4, -1}) {
        SCOPED_TRACE(kind);
        log.mark();
        EXPECT_EQ(service->checkDoorBell(kind), 0);
        EXPECT_TRUE(device.sent().empty());
        EXPECT_EQ(log.messages("WARNING"),
                  std::vector<std::string>{"Invalid Doorbell request [" + std::to_string(kind) + "]"});
        EXPECT_TRUE(log.has("DEBUG", "Received doorbell string ()"));
    }
}

TEST_F(IpmiTest, FailedDoorBellPollLooksLikeNothingToReport) {
    auto service = makeService();
    for (int kind : {DoorBellInventory, DoorBellTelemetry, DoorBellIOFWU}) {
        for (Step step : {Step::Send, Step::Select, Step::SelectNotReady, Step::Receive}) {
            SCOPED_TRACE(std::to_string(kind) + "/" + std::to_string(static_cast<int>(step)));
            log.mark();
            rmc.setDoorBell(static_cast<uint8_t>(0x80 + kind), kind == DoorBellInventory
                                                                   ? bytesOf("WriteInventory")
                                                                   : std::vector<uint8_t>{1, 0, 0, 0, 0});
            device.failNext(step);
            EXPECT_EQ(service->checkDoorBell(kind), 0);
            EXPECT_TRUE(log.has("ERROR", "An error occurred in checking RMC request via IPMI"));
            // The next poll of the same doorbell gets through.
            EXPECT_EQ(service->checkDoorBell(kind), 1);
        }
    }
}
