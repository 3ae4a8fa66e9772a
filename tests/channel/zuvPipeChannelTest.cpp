// The named-pipe packet channel: bytes on the pipe, payload ownership, failures as false.
#include "channel/zuvPipeChannel.h"

#include "zuvSandbox.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

namespace {

const char* const kPipe = "/tmp/channel-test.fifo";

class Channel : public ::testing::Test {
protected:
    void SetUp() override {
        zuvtest::writeConfig(R"({"ZUVLogLocation":"syslog","a":1})");
        unlink(kPipe);
        ASSERT_TRUE(zuvCreatePipe(kPipe));
    }
    void TearDown() override { unlink(kPipe); }

    // Raw bytes that a reader of the pipe sees for one packet.
    std::vector<uint8_t> bytesOnPipe(const zuvPipePacket& packet) {
        std::vector<uint8_t> bytes;
        std::thread reader([&] {
            const int fd = open(kPipe, O_RDONLY);
            uint8_t buffer[8192];
            ssize_t n;
            while ((n = read(fd, buffer, sizeof buffer)) > 0) bytes.insert(bytes.end(), buffer, buffer + n);
            close(fd);
        });
        EXPECT_TRUE(zuvWritePipe(kPipe, &packet));
        reader.join();
        return bytes;
    }

    // What zuvReadPipe makes of raw bytes written by a writer that closes afterwards.
    bool readRaw(const std::vector<uint8_t>& raw, zuvPipePacket& packet) {
        std::thread writer([&] {
            const int fd = open(kPipe, O_WRONLY);
            if (!raw.empty()) {
                EXPECT_EQ(write(fd, raw.data(), raw.size()), static_cast<ssize_t>(raw.size()));
            }
            close(fd);
        });
        packet.payload = nullptr;
        const bool ok = zuvReadPipe(kPipe, &packet);
        writer.join();
        return ok;
    }
};

TEST_F(Channel, PacketGoesOnThePipeAsItStandsInMemory) {
    char payload[] = "708";
    zuvPipePacket packet{};
    packet.senderTag = 9;
    packet.messageType = 0x0102;
    packet.payloadLength = 3;
    packet.senderPid = 4660;
    packet.payload = payload;
    const std::vector<uint8_t> expected{0x09, 0, 0, 0x02, 0x01, 0x03, 0, 0,   0,   0x34,
                                        0x12, 0, 0, 0,    0,    0,    0, '7', '0', '8'};
    EXPECT_EQ(bytesOnPipe(packet), expected);
}

TEST_F(Channel, ReadGivesATerminatedPayloadOfTheAnnouncedLength) {
    for (uint32_t length : {0u, 1u, 4096u}) {
        std::vector<uint8_t> raw{1, 0, 0, 0x03, 0x01};
        for (int i = 0; i < 4; ++i) raw.push_back(static_cast<uint8_t>(length >> (8 * i)));
        raw.insert(raw.end(), {0x78, 0x56, 0, 0, 0, 0, 0, 0});
        for (uint32_t i = 0; i < length; ++i) raw.push_back(static_cast<uint8_t>('a' + i % 26));
        zuvPipePacket packet{};
        ASSERT_TRUE(readRaw(raw, packet)) << length;
        // Copies: the packed fields are misaligned, so no reference may bind to them.
        EXPECT_EQ(uint16_t{packet.messageType}, 0x0103);
        EXPECT_EQ(uint32_t{packet.senderPid}, 0x5678u);
        EXPECT_EQ(uint32_t{packet.payloadLength}, length);
        ASSERT_NE(static_cast<char*>(packet.payload), nullptr);
        EXPECT_EQ(packet.payload[length], 0);
        EXPECT_EQ(std::strlen(packet.payload), length);
        free(packet.payload);
    }
}

TEST_F(Channel, ShortReadsAreFailuresAndNeverUseALengthNotReceived) {
    zuvPipePacket packet{};
    packet.payloadLength = 0xdeadbeef;
    EXPECT_FALSE(readRaw({}, packet));                       // the writer closed at once
    EXPECT_FALSE(readRaw({9, 0, 0, 2, 1, 200, 0}, packet));  // 7 of 17 meta bytes
    EXPECT_EQ(static_cast<char*>(packet.payload), nullptr);  // nothing allocated from a partial length
    EXPECT_EQ(uint32_t{packet.payloadLength}, 0xdeadbeefu);  // the record is left as it was
    std::vector<uint8_t> shortPayload{9, 0, 0, 2, 1, 10, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 'a', 'b'};
    EXPECT_FALSE(readRaw(shortPayload, packet));             // 2 of 10 payload bytes
    ASSERT_NE(static_cast<char*>(packet.payload), nullptr);  // allocated, and the caller frees it
    EXPECT_STREQ(packet.payload, "ab");
    free(packet.payload);
}

TEST_F(Channel, CreateAndWriteFailWithoutSideEffects) {
    EXPECT_FALSE(zuvCreatePipe(kPipe));  // exists already: not reused, not removed
    struct stat st {};
    ASSERT_EQ(stat(kPipe, &st), 0);
    EXPECT_TRUE(S_ISFIFO(st.st_mode));
    zuvtest::writeFile("/tmp/plain.txt", "keep");
    EXPECT_FALSE(zuvCreatePipe("/tmp/plain.txt"));
    EXPECT_EQ(zuvtest::readFile("/tmp/plain.txt"), "keep");

    zuvPipePacket packet{};
    char payload[] = "x";
    packet.payload = payload;
    packet.payloadLength = 1;
    EXPECT_FALSE(zuvWritePipe("/tmp/no-such-pipe", &packet));  // fails at once, no wait
    zuvPipePacket readPacket{};
    EXPECT_FALSE(zuvReadPipe("/tmp/no-such-pipe", &readPacket));
    EXPECT_EQ(static_cast<char*>(readPacket.payload), nullptr);
}

}  // namespace
