// Writes a typical host's SMBIOS image to a file, for trying tools by hand:
//   zuvSmbiosImageTool <path> [family]
#include <cstdio>
#include <exception>

#include "zuvSmbiosImage.h"

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s <path> [family]\n", argv[0]);
        return 2;
    }
    zuvsim::SmbiosSystem system;
    if (argc > 2) system.family = argv[2];
    system.uuid = {0x44, 0x45, 0x4c, 0x4c, 0x34, 0x00, 0x10, 0x36, 0x80, 0x4b, 0xb2, 0xc0, 0x4f, 0x50, 0x33, 0x32};
    zuvsim::SmbiosSlot slot2;
    slot2.designation = "PCIe Slot 2";
    slot2.id = 2;
    slot2.busNum = 0x3b;
    zuvsim::SmbiosOnboard nic;
    nic.busNum = 0x19;
    try {
        zuvsim::SmbiosImage()
            .addBios()
            .addType1(system)
            .addSlot(zuvsim::SmbiosSlot())
            .addSlot(slot2)
            .addOnboard(nic)
            .writeTo(argv[1]);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
    return 0;
}
