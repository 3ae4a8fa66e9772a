// The external BMC server against a stand-in for QEMU's side of the socket: answers, the
// three faults, the control commands, and connecting again after a drop.
#include "qemuWireRequest.h"
#include "zuvBmcExternServer.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

using zuvsim::ExternReply;
using zuvsim::ExternRequest;

namespace {

// The listening end, as QEMU's chardev with server=on.
class FakeQemu {
public:
    FakeQemu() {
        char dir[] = "/tmp/zuvbmc.XXXXXX";
        if (!mkdtemp(dir)) throw std::runtime_error("mkdtemp");
        directory = dir;
        path = directory + "/bmc.sock";
        listener = socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || listen(listener, 1) != 0) {
            throw std::runtime_error("listen");
        }
    }
    ~FakeQemu() {
        if (peer >= 0) close(peer);
        close(listener);
        unlink(path.c_str());
        rmdir(directory.c_str());
    }

    // Accepts the server's connection; false if none comes within 5 s.
    bool accept() {
        pollfd p{listener, POLLIN, 0};
        if (poll(&p, 1, 5000) != 1) return false;
        if (peer >= 0) close(peer);
        peer = ::accept(listener, nullptr, nullptr);
        return peer >= 0;
    }

    void send(const std::vector<uint8_t>& bytes) {
        ASSERT_EQ(ssize_t(bytes.size()), write(peer, bytes.data(), bytes.size()));
    }

    void sendRequest(uint8_t id, uint8_t netFn, uint8_t cmd, const std::vector<uint8_t>& data) {
        send(qemuWireRequest(id, netFn, cmd, data));
    }

    // The next frame from the server; an empty frame with `closed` set at end of stream.
    zuvsim::ExternFrame nextFrame(bool& closed) {
        closed = false;
        while (pending.empty()) {
            pollfd p{peer, POLLIN, 0};
            if (poll(&p, 1, 5000) != 1) throw std::runtime_error("no answer from the server");
            uint8_t buffer[512];
            const ssize_t n = read(peer, buffer, sizeof buffer);
            if (n <= 0) {
                closed = true;
                return {};
            }
            decoder.feed(buffer, size_t(n), pending);
        }
        zuvsim::ExternFrame frame = pending.front();
        pending.erase(pending.begin());
        return frame;
    }

    std::string path;

private:
    std::string directory;
    int listener = -1;
    int peer = -1;
    zuvsim::ExternFrameDecoder decoder;
    std::vector<zuvsim::ExternFrame> pending;
};

uint8_t sum(const std::vector<uint8_t>& bytes) {
    uint8_t s = 0;
    for (uint8_t b : bytes) s += b;
    return s;
}

}  // namespace

TEST(BmcExternServer, AnswersSilencesCorruptsAndReconnectsAfterADrop) {
    FakeQemu qemu;
    std::vector<uint8_t> seen;
    zuvsim::ExternBmcServer server(
        qemu.path,
        [&](const ExternRequest& r) {
            seen.push_back(r.cmd);
            ExternReply reply;
            reply.body.assign(r.data.rbegin(), r.data.rend());
            if (r.cmd == 0x10) reply.action = ExternReply::Action::Silent;
            if (r.cmd == 0x11) reply.action = ExternReply::Action::CorruptChecksum;
            if (r.cmd == 0x12) reply.action = ExternReply::Action::Disconnect;
            return reply;
        },
        std::chrono::milliseconds(10));
    server.start();
    ASSERT_TRUE(qemu.accept());
    qemu.send({0xFF, 0x01, 0xA1, 0x08, 0x3F, 0xA1});

    bool closed = false;
    qemu.sendRequest(1, 0x3A, 0x80, {0xA0, 0x02, 0xAA});
    auto answer = qemu.nextFrame(closed);
    EXPECT_EQ((std::vector<uint8_t>{1, 0xEC, 0x80, 0x00, 0xAA, 0x02, 0xA0}),
              std::vector<uint8_t>(answer.bytes.begin(), answer.bytes.end() - 1));
    EXPECT_EQ(0, sum(answer.bytes));

    // Unanswered: the next frame that arrives belongs to the request after it.
    qemu.sendRequest(2, 0x0A, 0x10, {});
    qemu.sendRequest(3, 0x0A, 0x11, {0x05});
    answer = qemu.nextFrame(closed);
    ASSERT_FALSE(closed);
    EXPECT_EQ(3, answer.bytes.at(0));
    EXPECT_EQ(1, sum(answer.bytes));  // off by one

    // A request whose own checksum is wrong never reaches the handler.
    qemu.send({4, 0x18, 0x01, 0x00, 0xA0});
    qemu.sendRequest(5, 0x06, 0x12, {});
    qemu.nextFrame(closed);
    EXPECT_TRUE(closed);
    ASSERT_TRUE(qemu.accept());
    qemu.sendRequest(6, 0x06, 0x01, {0x07});
    answer = qemu.nextFrame(closed);
    EXPECT_EQ(6, answer.bytes.at(0));
    server.stop();

    EXPECT_EQ((std::vector<uint8_t>{0x80, 0x10, 0x11, 0x12, 0x01}), seen);
    EXPECT_EQ(1, server.rejectedFrames());
    EXPECT_EQ(2, server.connections());
    const std::vector<std::vector<uint8_t>> controls{{0xFF, 0x01}, {0x08, 0x3F}};
    EXPECT_EQ(controls, server.controlCommands());
}

TEST(BmcExternServer, StopsWhileWaitingForTheSocket) {
    zuvsim::ExternBmcServer server("/nonexistent/zuv-bmc.sock", [](const ExternRequest&) { return ExternReply{}; });
    server.start();
    server.stop();
    EXPECT_EQ(0, server.connections());
}
