#pragma once
// The byte stream of QEMU's external BMC device (ipmi-bmc-extern): frames ended by 0xA0
// (message) or 0xA1 (control command), 0xAA escaping any of the three special bytes with bit 4
// set, and a checksum byte that makes a message's bytes sum to 0 modulo 256.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zuvsim {

struct ExternFrame {
    bool control = false;        // ended by 0xA1
    std::vector<uint8_t> bytes;  // unescaped, without the end byte
};

struct ExternRequest {
    uint8_t messageId = 0;
    uint8_t netFn = 0;
    uint8_t lun = 0;
    uint8_t cmd = 0;
    std::vector<uint8_t> data;
};

// Splits a byte stream into frames; bytes of an unfinished frame wait for the next feed.
class ExternFrameDecoder {
public:
    void feed(const uint8_t* bytes, size_t count, std::vector<ExternFrame>& frames);

private:
    std::vector<uint8_t> current;
    bool escaped = false;
};

// A message frame as a request; false when it is too short or its checksum is wrong.
bool parseExternRequest(const ExternFrame& frame, ExternRequest& request);

// The escaped wire bytes of the response to `request`, checksum and end byte included.
std::vector<uint8_t> encodeExternResponse(const ExternRequest& request, uint8_t completionCode,
                                          const std::vector<uint8_t>& body);

}  // namespace zuvsim
