#pragma once
// Text form of the 16 UUID bytes of a type 1 structure.

#include <cstdint>
#include <string>

// data1, data2 and data3 are read little-endian and byte-swapped when data3 has the
// 0xD011 pattern but not the 0x11D0 one; then "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x".
std::string smbiosUuidText(const uint8_t bytes[16]);
