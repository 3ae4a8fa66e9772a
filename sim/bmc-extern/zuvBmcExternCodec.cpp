#include "zuvBmcExternCodec.h"

namespace zuvsim {

namespace {

constexpr uint8_t kMessageEnd = 0xA0;
constexpr uint8_t kControlEnd = 0xA1;
constexpr uint8_t kEscape = 0xAA;

void putEscaped(std::vector<uint8_t>& out, uint8_t byte) {
    if (byte == kMessageEnd || byte == kControlEnd || byte == kEscape) {
        out.push_back(kEscape);
        out.push_back(byte | 0x10);
    } else {
        out.push_back(byte);
    }
}

uint8_t sumOf(const std::vector<uint8_t>& bytes) {
    uint8_t sum = 0;
    for (uint8_t b : bytes) sum += b;
    return sum;
}

}  // namespace

void ExternFrameDecoder::feed(const uint8_t* bytes, size_t count, std::vector<ExternFrame>& frames) {
    for (size_t i = 0; i < count; ++i) {
        const uint8_t byte = bytes[i];
        if (escaped) {
            current.push_back(byte & ~0x10);
            escaped = false;
        } else if (byte == kEscape) {
            escaped = true;
        } else if (byte == kMessageEnd || byte == kControlEnd) {
            frames.push_back(ExternFrame{byte == kControlEnd, std::move(current)});
            current.clear();
        } else {
            current.push_back(byte);
        }
    }
}

bool parseExternRequest(const ExternFrame& frame, ExternRequest& request) {
    const auto& b = frame.bytes;
    // message id, netfn/lun, command, checksum at the least
    if (frame.control || b.size() < 4) return false;
    if (sumOf(b) != 0) return false;
    request.messageId = b[0];
    request.netFn = b[1] >> 2;
    request.lun = b[1] & 0x03;
    request.cmd = b[2];
    request.data.assign(b.begin() + 3, b.end() - 1);
    return true;
}

std::vector<uint8_t> encodeExternResponse(const ExternRequest& request, uint8_t completionCode,
                                          const std::vector<uint8_t>& body) {
    std::vector<uint8_t> plain{request.messageId, static_cast<uint8_t>(((request.netFn + 1) << 2) | request.lun),
                               request.cmd, completionCode};
    plain.insert(plain.end(), body.begin(), body.end());
    plain.push_back(static_cast<uint8_t>(-sumOf(plain)));  // all bytes sum to 0
    std::vector<uint8_t> wire;
    for (uint8_t b : plain) putEscaped(wire, b);
    wire.push_back(kMessageEnd);
    return wire;
}

}  // namespace zuvsim
