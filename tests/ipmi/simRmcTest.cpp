// The simulated RMC itself must notice a host that breaks the block protocol; otherwise the
// command tests above could pass over a broken sender.
#include "zuvSimRmc.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

std::vector<uint8_t> firstBlock(const char* name, uint32_t length, const std::string& data, uint16_t index = 0) {
    std::vector<uint8_t> block(60, 0);
    block[0] = static_cast<uint8_t>(index);
    block[1] = static_cast<uint8_t>(index >> 8);
    block[2] = 20;
    std::memcpy(&block[3], name, std::strlen(name));
    for (int i = 0; i < 4; ++i) block[23 + i] = static_cast<uint8_t>(length >> (8 * i));
    std::memcpy(&block[27], data.data(), data.size());
    return block;
}

std::vector<uint8_t> laterBlock(uint16_t index, const std::string& data) {
    std::vector<uint8_t> block(60, 0);
    block[0] = static_cast<uint8_t>(index);
    block[1] = static_cast<uint8_t>(index >> 8);
    std::memcpy(&block[3], data.data(), data.size());
    return block;
}

uint16_t replyIndex(const zuvsim::Response& r) { return static_cast<uint16_t>(r.body[1] | r.body[2] << 8); }

}  // namespace

TEST(SimulatedRmcTest, BlockProtocolFaultsAreRecordedAndAnswered) {
    struct Case {
        const char* name;
        std::vector<uint8_t> first;
        bool echo;  // the second block echoes the reply index
        std::string second;
        uint8_t lastStatus;
        std::string fault;  // "" for none
    };
    const std::string a33(33, 'a');
    std::string nameless(20, 'N');
    const std::vector<Case> cases = {
        {"well formed", firstBlock("Cmd", 40, a33), true, std::string(6, 'b') + '\0', 0, ""},
        {"index not echoed", firstBlock("Cmd", 40, a33), false, std::string(6, 'b') + '\0', 3, "block 2 carries index"},
        {"no terminating NUL", firstBlock("Cmd", 40, a33), true, std::string(7, 'b'), 0,
         "argument without terminating NUL"},
        {"first block with an index", firstBlock("Cmd", 40, a33, 9), true, std::string(6, 'b') + '\0', 0,
         "first block carries index 9"},
        {"name without NUL", firstBlock(nameless.c_str(), 40, a33), true, std::string(6, 'b') + '\0', 0,
         "command name without NUL"},
        {"garbage behind the data", firstBlock("Cmd", 40, a33), true, std::string(6, 'b') + '\0' + "zz", 0,
         "not zero-filled"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        zuvsim::SimulatedRmc rmc;
        const zuvsim::Response first = rmc.handle(0x3A, 0x80, c.first);
        ASSERT_EQ(first.body.size(), 4u);
        EXPECT_EQ(first.body[0], 1) << "more data is due";
        const uint16_t echo = c.echo ? replyIndex(first) : static_cast<uint16_t>(replyIndex(first) + 7);
        const zuvsim::Response second = rmc.handle(0x3A, 0x80, laterBlock(echo, c.second));
        EXPECT_EQ(second.body[0], c.lastStatus);
        const auto commands = rmc.commands();
        ASSERT_EQ(commands.size(), 1u);
        EXPECT_TRUE(commands[0].complete);
        EXPECT_EQ(commands[0].blocks, 2u);
        if (c.fault.empty()) {
            EXPECT_TRUE(commands[0].faults.empty()) << commands[0].faults.front();
            EXPECT_EQ(commands[0].name, "Cmd");
            EXPECT_EQ(commands[0].text(), a33 + "bbbbbb");
        } else {
            ASSERT_FALSE(commands[0].faults.empty());
            EXPECT_NE(commands[0].faults.front().find(c.fault), std::string::npos) << commands[0].faults.front();
        }
    }
    zuvsim::SimulatedRmc rmc;
    EXPECT_EQ(rmc.handle(0x3A, 0x80, std::vector<uint8_t>(59)).completionCode, 0xC7) << "a block is 60 bytes";
}

TEST(SimulatedRmcTest, RepositoryChecksReservationAndFollowsRecordIds) {
    zuvsim::SimulatedRmc rmc;
    const uint16_t first = rmc.addSdr(0x01, {1, 2, 3});
    const uint16_t second = rmc.addSdr(0x02, {});
    auto getSdr = [&](uint16_t reservation, uint16_t id, uint8_t offset, uint8_t count) {
        return rmc.handle(0x0A, 0x23,
                          {static_cast<uint8_t>(reservation), static_cast<uint8_t>(reservation >> 8),
                           static_cast<uint8_t>(id), static_cast<uint8_t>(id >> 8), offset, count});
    };
    EXPECT_EQ(getSdr(0, 0, 0, 5).completionCode, 0xC5) << "no reservation yet";
    const zuvsim::Response reservation = rmc.handle(0x0A, 0x22, {});
    const uint16_t id = static_cast<uint16_t>(reservation.body[0] | reservation.body[1] << 8);
    const zuvsim::Response header = getSdr(id, 0, 0, 5);
    EXPECT_EQ(header.body,
              (std::vector<uint8_t>{static_cast<uint8_t>(second), static_cast<uint8_t>(second >> 8),
                                    static_cast<uint8_t>(first), static_cast<uint8_t>(first >> 8), 0x51, 0x01, 3}));
    EXPECT_EQ(getSdr(id, second, 0, 5).body[0], 0xFF) << "the last record points at the end mark";
    EXPECT_EQ(getSdr(id, 0x7777, 0, 5).completionCode, 0xCB);
    rmc.cancelReservationAt(0, 5);
    EXPECT_EQ(getSdr(id, first, 5, 3).completionCode, 0xC5);
    EXPECT_EQ(getSdr(id, first, 0, 5).completionCode, 0xC5) << "a cancelled reservation stays invalid";
}
