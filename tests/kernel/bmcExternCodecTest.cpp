// The framing of QEMU's external BMC protocol: escapes, checksums, split reads, rejects.
#include "qemuWireRequest.h"
#include "zuvBmcExternCodec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using zuvsim::ExternFrame;
using zuvsim::ExternFrameDecoder;
using zuvsim::ExternRequest;

namespace {

std::vector<ExternFrame> decode(const std::vector<uint8_t>& wire, size_t piece) {
    ExternFrameDecoder decoder;
    std::vector<ExternFrame> frames;
    for (size_t i = 0; i < wire.size(); i += piece) {
        decoder.feed(wire.data() + i, std::min(piece, wire.size() - i), frames);
    }
    return frames;
}

std::vector<uint8_t> wireRequest(uint8_t id, uint8_t netFn, uint8_t cmd, const std::vector<uint8_t>& data) {
    return qemuWireRequest(id, netFn, cmd, data);
}

}  // namespace

TEST(BmcExternCodec, RequestsSurviveEscapesAndAnySplitOfTheStream) {
    const struct {
        uint8_t id, netFn, cmd;
        std::vector<uint8_t> data;
    } cases[] = {
        {1, 0x06, 0x01, {}},
        {0xA0, 0x3A, 0x80, {0xA0, 0xA1, 0xAA, 0x00, 0xFF, 0xB0, 0xB1, 0xBA}},  // every special byte
        {7, 0x0A, 0x23, {0x01, 0x00, 0x05, 0x00, 0x00, 0x05}},
    };
    std::vector<uint8_t> stream{0xFF, 0x01, 0xA1, 0x08, 0x3F, 0xA1};  // QEMU's opening controls
    for (const auto& c : cases) {
        auto w = wireRequest(c.id, c.netFn, c.cmd, c.data);
        stream.insert(stream.end(), w.begin(), w.end());
    }
    for (size_t piece : {1, 2, 3, 7, 1000}) {
        SCOPED_TRACE(piece);
        auto frames = decode(stream, piece);
        ASSERT_EQ(5u, frames.size());
        EXPECT_TRUE(frames[0].control);
        EXPECT_EQ((std::vector<uint8_t>{0xFF, 0x01}), frames[0].bytes);
        EXPECT_EQ((std::vector<uint8_t>{0x08, 0x3F}), frames[1].bytes);
        for (size_t i = 0; i < 3; ++i) {
            ExternRequest r;
            ASSERT_TRUE(zuvsim::parseExternRequest(frames[i + 2], r)) << i;
            EXPECT_EQ(cases[i].id, r.messageId);
            EXPECT_EQ(cases[i].netFn, r.netFn);
            EXPECT_EQ(cases[i].cmd, r.cmd);
            EXPECT_EQ(cases[i].data, r.data);
        }
    }
}

TEST(BmcExternCodec, ShortFramesAndBadChecksumsAreRejected) {
    ExternRequest r;
    auto good = decode(wireRequest(3, 0x06, 0x01, {0x10}), 100).at(0);
    EXPECT_TRUE(zuvsim::parseExternRequest(good, r));
    auto bad = good;
    bad.bytes.back() ^= 1;
    EXPECT_FALSE(zuvsim::parseExternRequest(bad, r));
    EXPECT_FALSE(zuvsim::parseExternRequest(ExternFrame{false, {1, 0x18, 0xE7}}, r));
    auto control = good;
    control.control = true;
    EXPECT_FALSE(zuvsim::parseExternRequest(control, r));
}

TEST(BmcExternCodec, ResponsesEchoTheRequestAndSumToZero) {
    ExternRequest request;
    request.messageId = 0xAA;  // must be escaped on the way back
    request.netFn = 0x3A;
    request.lun = 2;
    request.cmd = 0x80;
    const std::vector<uint8_t> body{0x01, 0xA1, 0x00, 0x00};
    for (bool corrupt : {false, true}) {
        auto wire = zuvsim::encodeExternResponse(request, 0xC1, body, corrupt);
        EXPECT_EQ(0xA0, wire.back());
        auto frames = decode(wire, 100);
        ASSERT_EQ(1u, frames.size());
        const auto& b = frames[0].bytes;
        ASSERT_EQ(4 + body.size() + 1, b.size());
        EXPECT_EQ(0xAA, b[0]);
        EXPECT_EQ(((0x3A + 1) << 2) | 2, b[1]);
        EXPECT_EQ(0x80, b[2]);
        EXPECT_EQ(0xC1, b[3]);
        EXPECT_EQ(body, std::vector<uint8_t>(b.begin() + 4, b.end() - 1));
        uint8_t sum = 0;
        for (uint8_t x : b) sum += x;
        EXPECT_EQ(corrupt ? 1 : 0, sum);
        // No special byte is left unescaped inside the frame.
        for (size_t i = 0; i + 1 < wire.size(); ++i) {
            if (wire[i] == 0xAA)
                ++i;
            else
                EXPECT_TRUE(wire[i] != 0xA0 && wire[i] != 0xA1) << i;
        }
    }
}
