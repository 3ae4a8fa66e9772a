#include "platform/zuvSmbiosUuid.h"

#include <cstdio>

std::string smbiosUuidText(const uint8_t b[16]) {
    uint32_t data1 = uint32_t(b[0]) | uint32_t(b[1]) << 8 | uint32_t(b[2]) << 16 | uint32_t(b[3]) << 24;
    uint16_t data2 = uint16_t(b[4] | b[5] << 8);
    uint16_t data3 = uint16_t(b[6] | b[7] << 8);
    if (data3 != 0 && (data3 & 0x11D0) != 0x11D0 && (data3 & 0xD011) == 0xD011) {
        data1 = __builtin_bswap32(data1);
        data2 = __builtin_bswap16(data2);
        data3 = __builtin_bswap16(data3);
    }
    char text[40];
    // 36 characters of fixed width: the text always fits.
    (void)std::snprintf(text, sizeof text, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", data1, data2, data3,
                        b[8], b[9], b[10], b[11], b[12], b[13], b[14], b[15]);
    return text;
}
