// Writes the SDR repository that QEMU's BMC loads with sdrfile=: records one after another, each
// its 5-byte header (record id, version, type, body length) and body, and prints their number.
// Sensor records and device locators of their usual lengths (ID strings of 0 to 16 characters),
// OEM records up to the longest body, 250 bytes; last, a record with no body.
// Usage: zuvKernelSdrFile <file>
#include <cstdint>
#include <cstdio>
#include <vector>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    struct Kind {
        uint8_t type, fixedLength;  // body length without the ID string
    };
    const Kind kinds[] = {{0x01, 43}, {0x02, 27}, {0x03, 12}, {0x11, 11}, {0x12, 11}, {0xC0, 3}};
    const uint8_t oemLengths[] = {250, 3, 16, 17, 32, 33, 100, 249, 48, 200};
    std::vector<uint8_t> file;
    const int records = 120;
    for (int i = 0; i < records; ++i) {
        const Kind& kind = kinds[i % 6];
        const int length = i == records - 1    ? 0
                           : kind.type == 0xC0 ? oemLengths[i / 6 % 10]
                                               : kind.fixedLength + i % 17;
        for (int b : {i & 0xFF, i >> 8, 0x51, int(kind.type), length}) file.push_back(uint8_t(b));
        for (int j = 0; j < length; ++j) file.push_back(uint8_t(i * 31 + j * 7 + 1));
    }
    FILE* out = std::fopen(argv[1], "wb");
    if (out == nullptr || std::fwrite(file.data(), 1, file.size(), out) != file.size() || std::fclose(out) != 0)
        return 1;
    std::printf("%d\n", records);
    return 0;
}
