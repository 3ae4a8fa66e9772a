// The debug lines of the pipe channel, as they leave the process through syslog. The logger is
// built once per process, so this binary has a configuration of its own with the debug log on.
#include "channel/zuvPipeChannel.h"

#include "zuvSandbox.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

const char* const kPipe = "/tmp/channel-log.fifo";
const char* const kLevel = "[DEBUG]   ";
const char* const kTag = " ZUV_MSGINFRA: ";

// The channel's lines as "thread|message": level, line number, tag and priority are checked here.
std::vector<std::string> channelMessages(zuvtest::SyslogCollector& collector) {
    std::vector<std::string> messages;
    for (const zuvtest::SyslogLine& line : collector.lines()) {
        const size_t tag = line.message.find(kTag);
        if (tag == std::string::npos) continue;
        const std::string& m = line.message;
        EXPECT_EQ(m.rfind(kLevel, 0), 0u) << m;
        EXPECT_EQ(line.priority, LOG_DEBUG) << m;
        EXPECT_EQ(m.back(), '\n') << m;
        const size_t threadStart = std::string(kLevel).size();
        const size_t threadEnd = m.find(' ', threadStart);
        const std::string lineNumber = m.substr(threadEnd + 1, tag - threadEnd - 1);
        EXPECT_EQ(lineNumber.size(), 3u) << m;  // the channel's lines lie between 10 and 999
        const size_t start = tag + std::string(kTag).size();
        messages.push_back(m.substr(threadStart, threadEnd - threadStart) + "|" +
                           m.substr(start, m.size() - start - 1));
    }
    return messages;
}

class ChannelLog : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        zuvtest::writeConfig(R"({"EnableDebugLog":true,"DebugLogLocation":"syslog","ZUVLogLocation":"syslog","a":1})");
    }
    void SetUp() override { unlink(kPipe); }
    void TearDown() override { unlink(kPipe); }
};

TEST_F(ChannelLog, EachStepOfAConversationLogsItsLine) {
    zuvtest::SyslogCollector collector;
    ASSERT_TRUE(zuvCreatePipe(kPipe));
    EXPECT_FALSE(zuvCreatePipe(kPipe));

    char text[] = "708";
    zuvPipePacket sent{};
    sent.senderTag = 9;
    sent.messageType = 0x0102;
    sent.payloadLength = 3;
    sent.payload = text;
    zuvPipePacket received{};
    received.payload = nullptr;
    bool readOk = false;
    std::thread reader([&] { readOk = zuvReadPipe(kPipe, &received); });
    const bool writeOk = zuvWritePipe(kPipe, &sent);
    reader.join();
    ASSERT_TRUE(writeOk);
    ASSERT_TRUE(readOk);
    EXPECT_STREQ(received.payload, "708");
    free(received.payload);

    const std::string pipe = kPipe;
    std::vector<std::string> messages = channelMessages(collector);
    ASSERT_EQ(messages.size(), 8u);
    EXPECT_EQ(messages[0], "100|Creation of Pipe " + pipe + " is successfull.");
    EXPECT_EQ(messages[1], "100|Creation of Pipe " + pipe + " failed.");
    // The two ends interleave; the writer is the first thread that logged (100), the reader the next.
    std::vector<std::string> writer, readerLines;
    for (size_t i = 2; i < messages.size(); ++i) {
        if (messages[i].rfind("100|", 0) == 0) writer.push_back(messages[i].substr(4));
        if (messages[i].rfind("101|", 0) == 0) readerLines.push_back(messages[i].substr(4));
    }
    const auto descriptorOf = [](const std::string& line, const std::string& lead) {
        return line.rfind(lead, 0) == 0 ? line.substr(lead.size(), line.find('.') - lead.size()) : "?";
    };
    ASSERT_EQ(writer.size(), 3u);
    const std::string writeFd = descriptorOf(writer[0], "writeFd = ");
    EXPECT_GE(std::atoi(writeFd.c_str()), 3) << writer[0];
    EXPECT_EQ(writer[0], "writeFd = " + writeFd + ". pipe = " + pipe);
    EXPECT_EQ(writer[1], "17 packet meta data bytes written on pipe =" + pipe);
    EXPECT_EQ(writer[2], "3 bytes payload written on pipe =" + pipe);
    ASSERT_EQ(readerLines.size(), 3u);
    const std::string readFd = descriptorOf(readerLines[0], "readFd = ");
    EXPECT_GE(std::atoi(readFd.c_str()), 3) << readerLines[0];
    EXPECT_EQ(readerLines[0], "readFd = " + readFd + ". pipe = " + pipe);
    EXPECT_EQ(readerLines[1], "Read 17 packet meta data bytes from readFd = " + readFd);
    EXPECT_EQ(readerLines[2], "Read 3 payload bytes from readFd = " + readFd);
}

TEST_F(ChannelLog, FailedOpensLogTheDescriptorAndTheFailure) {
    zuvtest::SyslogCollector collector;
    zuvPipePacket packet{};
    char text[] = "x";
    packet.payload = text;
    packet.payloadLength = 1;
    EXPECT_FALSE(zuvWritePipe("/tmp/no-such-pipe", &packet));
    packet.payload = nullptr;
    EXPECT_FALSE(zuvReadPipe("/tmp/no-such-pipe", &packet));
    const std::vector<std::string> messages = channelMessages(collector);
    ASSERT_EQ(messages.size(), 4u);
    const std::string lines[] = {
        "writeFd = -1. pipe = /tmp/no-such-pipe", "zuvWritePipe: Open of /tmp/no-such-pipe failed while writing.",
        "readFd = -1. pipe = /tmp/no-such-pipe", "zuvReadPipe:Open of /tmp/no-such-pipe failed while reading."};
    for (size_t i = 0; i < 4; ++i) EXPECT_EQ(messages[i].substr(messages[i].find('|') + 1), lines[i]);
}

}  // namespace
