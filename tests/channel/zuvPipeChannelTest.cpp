// The named-pipe packet channel: the modes it creates with, the bytes on the pipe, what a read
// hands out, failures as false, and the debug line of each step (in the test's debug log file).
#include "channel/zuvPipeChannel.h"

#include "zuvSandbox.h"
#include "zuvTestLog.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

TEST(Channel, EachOperationDoesItsPartAndLogsItsLines) {
    zuvtest::startFileLogging();
    const std::string pipe = "/tmp/channel.fifo", made = "Creation of Pipe " + pipe + " is successfull.\n";
    int fd = -1;              // the descriptor of the channel's opens, "#" in the log
    const auto log = [&fd] {  // the channel's debug lines since the last call
        std::string all, number = "Fd = " + std::to_string(fd);
        for (const std::string& l : zuvtest::logMessages(zuvtest::kDebugLog, "ZUV_MSGINFRA", "DEBUG")) all += l + "\n";
        for (size_t at; (at = all.find(number)) != std::string::npos;) all.replace(at, number.size(), "Fd = #");
        return zuvtest::clearLogs(), all;
    };
    struct stat st {};
    for (const mode_t mask : {0, 027}) {  // 0666, narrowed by the umask
        unlink(pipe.c_str());
        const mode_t old = umask(mask);
        EXPECT_TRUE(zuvCreatePipe(pipe.c_str()));
        umask(old);
        EXPECT_TRUE(stat(pipe.c_str(), &st) == 0 && st.st_mode == (S_IFIFO | (0666 & ~mask))) << mask;
    }
    EXPECT_FALSE(zuvCreatePipe(pipe.c_str()));  // not reused, not removed
    EXPECT_TRUE(stat(pipe.c_str(), &st) == 0 && S_ISFIFO(st.st_mode));
    EXPECT_EQ(log(), made + made + "Creation of Pipe " + pipe + " failed.\n");

    const int end = open(pipe.c_str(), O_RDWR);  // held by the test, so that the channel's opens never wait
    close(fd = dup(0));                          // the lowest free descriptor: the channel's opens get it
    char text[] = "708";
    zuvPipePacket packet{9, {}, 0x0102, 3, 4660, {}, text};
    ASSERT_TRUE(zuvWritePipe(pipe.c_str(), &packet));
    std::string onPipe(64, '\0');
    onPipe.resize(read(end, &onPipe[0], onPipe.size()));
    EXPECT_EQ(onPipe, std::string("\x09\0\0\x02\x01\x03\0\0\0\x34\x12\0\0\0\0\0\0", 17) + "708");
    EXPECT_EQ(log(), "writeFd = #. pipe = " + pipe + "\n17 packet meta data bytes written on pipe =" + pipe +
                         "\n3 bytes payload written on pipe =" + pipe + "\n");

    // Reads of meta data (type 0x0103, pid 0x5678, the length) and what follows it; a length of 200 is cut after
    // 7 bytes of meta data, which leaves the record as it was and allocates nothing.
    const std::string opened = "readFd = #. pipe = " + pipe + "\nRead ";
    const std::string meta = opened + "17 packet meta data bytes from readFd = #\nRead ";
    const struct {
        uint16_t length;
        std::string sent, log;
    } cases[] = {
        {0, "", meta + "0 payload bytes from readFd = #\n"},
        {4096, std::string(4096, 'x'), meta + "4096 payload bytes from readFd = #\n"},
        {200, "", opened + "7 packet meta data bytes from readFd = #\nShort packet meta data: 7 of 17 bytes\n"},
        {10, "ab", meta + "2 payload bytes from readFd = #\nShort payload: 2 of 10 bytes\n"},
    };
    for (const auto& c : cases) {
        std::string raw = std::string("\x09\0\0\x03\x01", 5) + char(c.length) + char(c.length >> 8) +
                          std::string("\0\0\x78\x56\0\0\0\0\0\0", 10) + c.sent;
        raw.resize(c.length == 200 ? 7 : raw.size());
        ASSERT_EQ(write(end, raw.data(), raw.size()), ssize_t(raw.size()));
        packet = zuvPipePacket{};
        packet.payloadLength = 0xdeadbeef;
        EXPECT_EQ(zuvReadPipe(pipe.c_str(), &packet), c.log.find("Short") == std::string::npos) << c.length;
        const uint32_t length = packet.payloadLength;
        EXPECT_EQ(length, c.length == 200 ? 0xdeadbeef : c.length) << c.length;
        ASSERT_EQ(packet.payload == nullptr, c.length == 200) << c.length;
        if (packet.payload) {  // zero-filled behind what arrived, and one byte longer than announced
            EXPECT_EQ(std::string(packet.payload, length + 1), c.sent + std::string(length + 1 - c.sent.size(), '\0'));
            EXPECT_EQ(uint32_t(packet.messageType) << 16 | packet.senderPid, 0x01035678u) << c.length;
        }
        free(packet.payload);
        EXPECT_EQ(log(), c.log) << c.length;
    }
    close(end);

    packet = zuvPipePacket{};
    EXPECT_FALSE(zuvWritePipe("/tmp/none", &packet));  // at once, with no wait
    EXPECT_FALSE(zuvReadPipe("/tmp/none", &packet));
    EXPECT_EQ(static_cast<char*>(packet.payload), nullptr);
    EXPECT_EQ(log(),
              "writeFd = -1. pipe = /tmp/none\nzuvWritePipe: Open of /tmp/none failed while writing.\n"
              "readFd = -1. pipe = /tmp/none\nzuvReadPipe:Open of /tmp/none failed while reading.\n");
}

}  // namespace
