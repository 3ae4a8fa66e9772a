#pragma once
// A request on the external BMC wire as QEMU writes it: id, netfn/lun, cmd, data, checksum,
// escaped, then 0xA0. Written out here, apart from the codec under test.

#include "zuvBmcExternCodec.h"

#include <cstdint>
#include <vector>

inline std::vector<uint8_t> qemuWireRequest(uint8_t id, uint8_t netFn, uint8_t cmd, const std::vector<uint8_t>& data) {
    std::vector<uint8_t> plain;
    plain.reserve(4 + data.size());
    plain.push_back(id);
    plain.push_back(static_cast<uint8_t>(netFn << 2));
    plain.push_back(cmd);
    for (uint8_t b : data) plain.push_back(b);  // (insert() trips a false array-bounds warning of GCC 12)
    plain.push_back(zuvsim::externChecksum(plain));
    std::vector<uint8_t> wire;
    for (uint8_t b : plain) {
        if (b == 0xA0 || b == 0xA1 || b == 0xAA) {
            wire.push_back(0xAA);
            wire.push_back(static_cast<uint8_t>(b | 0x10));
        } else {
            wire.push_back(b);
        }
    }
    wire.push_back(0xA0);
    return wire;
}
