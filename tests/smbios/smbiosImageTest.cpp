// The generator's images are real SMBIOS: dmidecode reads them back as they were built.
#include <cstdio>
#include <string>

#include "smbiosFixture.h"

namespace {

// Output and exit status of dmidecode on an image file, standard error included.
std::string dmidecode(const std::string& path, int* status) {
    std::string out;
    FILE* pipe = popen(("dmidecode --from-dump " + path + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return out;
    char buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) out.append(buffer, n);
    *status = pclose(pipe);
    return out;
}

}  // namespace

TEST(SmbiosImage, DmidecodeReadsGeneratedImagesAsBuilt) {
    zuvsim::SmbiosSystem modern;
    modern.family = "PLATFAMILY00003";
    modern.manufacturer = "Maker Inc";
    modern.serialNumber = "ABC123";
    modern.uuid = {0x44, 0x45, 0x4c, 0x4c, 0x34, 0x00, 0x10, 0x36, 0x80, 0x4b, 0xb2, 0xc0, 0x4f, 0x50, 0x33, 0x32};
    zuvsim::SmbiosSystem old = modern;
    old.length = 25;
    zuvsim::SmbiosSlot slot;
    slot.designation = "PCIe Slot 7";
    slot.busNum = 0x5e;
    slot.devFuncNum = 0x08;
    zuvsim::SmbiosSlot shortSlot = slot;
    shortSlot.length = 13;
    zuvsim::SmbiosOnboard nic;
    nic.referenceDesignation = "NIC.Embedded.1";
    nic.busNum = 0x19;
    nic.deviceNum = 2;
    nic.functionNum = 1;

    struct Case {
        const char* name;
        zuvsim::SmbiosImage image;
        std::vector<std::string> expected;
    } cases[] = {
        {"modern host",
         zuvsim::SmbiosImage().addBios().addType1(modern).addSlot(slot).addOnboard(nic),
         {"SMBIOS 2.8 present.", "5 structures occupying", "Manufacturer: Maker Inc", "Serial Number: ABC123",
          "UUID: 4c4c4544-0034-3610-804b-b2c04f503332", "Family: PLATFAMILY00003", "Designation: PCIe Slot 7",
          "Bus Address: 0000:5e:01.0", "Reference Designation: NIC.Embedded.1", "Bus Address: 0000:19:02.1",
          "End Of Table"}},
        {"older layouts",
         zuvsim::SmbiosImage().addType1(old).addSlot(shortSlot),
         {"DMI type 1, 25 bytes", "DMI type 9, 13 bytes", "Designation: PCIe Slot 7"}},
        {"family chosen by the caller", zuvsim::SmbiosImage().addType1("PLATFAMILY00004"), {"Family: PLATFAMILY00004"}},
    };
    for (Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = "/tmp/smbios-image.bin";
        c.image.writeTo(path);
        int status = -1;
        std::string out = dmidecode(path, &status);
        EXPECT_EQ(status, 0) << out;
        for (const std::string& line : c.expected) EXPECT_NE(out.find(line), std::string::npos) << line << "\n" << out;
        for (const char* complaint : {"Invalid", "invalid", "Truncated", "wrong", "No SMBIOS", "checksum"}) {
            EXPECT_EQ(out.find(complaint), std::string::npos) << complaint << "\n" << out;
        }
    }
}
