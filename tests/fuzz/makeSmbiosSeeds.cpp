// Writes the seed corpus of the SMBIOS walk fuzzer into a directory: typical host images
// and a few unusual ones, all from the image generator.
#include <cstdio>
#include <exception>
#include <string>

#include "zuvSmbiosImage.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <corpus directory>\n", argv[0]);
        return 2;
    }
    const std::string dir = argv[1];
    zuvsim::SmbiosSystem old;
    old.length = 25;
    zuvsim::SmbiosSlot shortSlot;
    shortSlot.length = 13;
    zuvsim::SmbiosOnboard nic;
    nic.busNum = 0x19;
    nic.deviceNum = 3;
    try {
        zuvsim::SmbiosImage().addBios().addType1("PLATFAMILY00001").addSlot({}).addOnboard(nic).writeTo(dir + "/host");
        zuvsim::SmbiosImage().setEntryOffset(16).addType1(old).addSlot(shortSlot).writeTo(dir + "/older");
        zuvsim::SmbiosImage().addType1("PLATFAMILY00004").withoutEndOfTable().writeTo(dir + "/no-end");
        zuvsim::SmbiosImage()
            .addStructure(2, {1, 2, 3}, {"Board", std::string("odd\x7f\x80"), "third"})
            .addType1(zuvsim::SmbiosSystem())
            .writeTo(dir + "/strings");
        zuvsim::SmbiosImage many;
        for (int i = 0; i < 12; ++i) many.addSlot({}).addOnboard(nic);
        many.writeTo(dir + "/many");
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
    return 0;
}
