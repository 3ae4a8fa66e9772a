#pragma once
// What the guest sends to the simulated RMC behind QEMU's external BMC device and what the RMC
// answers, shared by the guest's tests and the host. The bytes 0xA0, 0xA1 and 0xAA, special on
// QEMU's socket, travel both ways.
#include <cstdint>
#include <string>
#include <vector>

namespace zuvkernel {

// An MPEventGen argument over 6 blocks: L = 300 = 33 + 4 * 57 + 39.
inline std::string externEventText() {
    const std::string head = "{\"ID\":708,\"Message\":\"\xA0\xA1\xAA ";
    return head + std::string(297 - head.size(), 'e') + "\"}";
}

const std::vector<uint8_t> kIofwuDoorBell{0xA0, 0xAA};  // the first byte is the answer

// The one request the host leaves unanswered: Get SDR Repository Info.
constexpr uint8_t kSilentNetFn = 0x0A, kSilentCmd = 0x20;

}  // namespace zuvkernel
