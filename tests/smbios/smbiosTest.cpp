// The SMBIOS reader and SMBIOSVMware over images at the host's SMBIOS device path. Structures
// are written byte by byte where their layout is under test.
#include <gtest/gtest.h>

#include <unistd.h>

#include <thread>

#include "platform/SMBIOSVMware.h"
#include "platform/zuvSmbiosReader.h"
#include "platform/zuvSmbiosUuid.h"
#include "zuvSandbox.h"
#include "zuvSmbiosImage.h"

using Bytes = std::vector<uint8_t>;
using zuvsim::SmbiosImage;

namespace {

void install(const Bytes& image) {
    smbiosClose();
    zuvtest::writeFile(smbiosDevicePath, std::string(image.begin(), image.end()));
}

// The records of a type as text, "-1" when there are none (with the outputs cleared).
std::string dump(int type) {
    void* table = &table;
    unsigned count = 9;
    if (smbiosGetRecords(type, &table, &count) != 0) return table == nullptr && count == 0 ? "-1" : "-1, not cleared";
    std::string text;
    char line[1024];
    for (unsigned i = 0; i < count; ++i) {
        const auto& s = static_cast<smbiosSystemInfo*>(table)[i];
        const auto& d = static_cast<smbiosOnboardDevice*>(table)[i];
        const auto& t = static_cast<smbiosSystemSlot*>(table)[i];
        if (type == 1) {
            snprintf(line, sizeof line, "%d %d %d %s|%s|%s|%s %s %d %s|%s;", s.recordType, s.recordLength, s.handle,
                     s.manufacturer, s.productName, s.version, s.serialNumber, s.uuid, s.wakeUpType, s.skuNumber,
                     s.family);
        } else if (type == 41) {
            snprintf(line, sizeof line, "%d %d %d %s %d %d %x %x %d %d;", d.recordType, d.recordLength, d.handle,
                     d.referenceDesignation, d.deviceType, d.deviceTypeInstance, d.segmentGroupNum, d.busNum,
                     d.deviceNum, d.functionNum);
        } else {
            snprintf(line, sizeof line, "%d %d %d %s %x %x %x %x %x %x %x %x %x %x;", t.recordType, t.recordLength,
                     t.handle, t.designation, t.type, t.busDataWidth, t.currentUsage, t.length, t.id,
                     t.characteristics1, t.characteristics2, t.segmentGroupNum, t.busNum, t.devFuncNum);
        }
        text += line;
    }
    free(table);
    return text;
}

// A type 1 structure of a formatted length, its UUID with the 0xD011 pattern.
SmbiosImage system(uint8_t length, const std::string& family = "F") {
    Bytes formatted = {1, 2, 3, 4, 1, 2, 3, 4, 5, 6, 0x11, 0xD0, 8, 9, 10, 11, 12, 13, 14, 15, 6, 5, 6};
    formatted.resize(length - 4u);
    return SmbiosImage().addStructure(1, formatted, {"M", std::string(70, 'P'), "V", "S", "K", family});
}

const Bytes kSlot = {1, 0xA5, 0x0B, 3, 4, 0x34, 0x12, 0x0C, 0x05, 0x02, 0x01, 0x3B, 0x1A};
const char* const kSlotText = "9 17 1 Slot 3 a5 b 3 4 1234 c 5 102 3b 1a;";
const std::string kSystemText = "M|" + std::string(70, 'P') + "|V|S 01020304-0506-11d0-0809-0a0b0c0d0e0f 6 ";

Bytes withEntry(Bytes image, size_t at, uint8_t value, size_t size) {
    image[at] = value;
    image.resize(size);
    return image;
}

class SmbiosTest : public ::testing::Test {
protected:
    void TearDown() override { smbiosClose(); }
};

}  // namespace

TEST_F(SmbiosTest, RecordsOfEachTypeFieldByField) {
    const SmbiosImage bios = SmbiosImage().addBios();
    const Bytes good = SmbiosImage(bios).addStructure(9, kSlot, {"Slot 3"}).bytes();
    const std::tuple<const char*, Bytes, int, std::string> cases[] = {
        {"slot behind an entry point at 64",
         SmbiosImage(bios).setEntryOffset(64).addStructure(9, kSlot, {"Slot 3"}).bytes(), 9, kSlotText},
        {"slot of length 13",
         SmbiosImage(bios).addStructure(9, Bytes(kSlot.begin(), kSlot.end() - 4), {"Slot 3"}).bytes(), 9,
         "9 13 1 Slot 3 a5 b 3 4 1234 c 5 0 0 0;"},
        {"unprintable bytes", SmbiosImage().addStructure(9, kSlot, {"x\x7fy\x80z\x1f"}).bytes(), 9,
         "9 17 0 x.y.z. a5 b 3 4 1234 c 5 102 3b 1a;"},
        {"slot name cut to its field", SmbiosImage().addStructure(9, kSlot, {std::string(200, 'D')}).bytes(), 9,
         "9 17 0 " + std::string(127, 'D') + " a5 b 3 4 1234 c 5 102 3b 1a;"},
        {"onboard device", SmbiosImage(bios).addStructure(41, {1, 0x85, 2, 1, 2, 0x19, 0xFD}, {"NIC 2"}).bytes(), 41,
         "41 11 1 NIC 2 5 2 201 19 31 5;"},
        {"system of 27 bytes", system(27).bytes(), 1, "1 27 0 " + kSystemText + "K|F;"},
        {"system of 26 bytes", system(26).bytes(), 1, "1 26 0 " + kSystemText + ".|;"},
        {"system of 25 bytes", system(25).bytes(), 1, "1 25 0 " + kSystemText + ".|;"},
        {"system of 24 bytes", system(24).bytes(), 1, "1 24 0 M|" + std::string(70, 'P') + "|V|S  0 |;"},
        {"system of 8 bytes", system(8).bytes(), 1, "1 8 0 M|" + std::string(70, 'P') + "|V|S  0 |;"},
        {"system of 7 bytes", system(7).bytes(), 1, "1 7 0 |||  0 |;"},
        {"family cut to its field", system(27, std::string(100, 'F')).bytes(), 1,
         "1 27 0 " + kSystemText + "K|" + std::string(63, 'F') + ";"},
        {"no structure of the type", good, 41, "-1"},
        {"type without a record layout", good, 0, "-1"},
        // The walk: the length byte is added whatever it says; a structure not closed inside the table ends it.
        {"length below the header", SmbiosImage(bios).addRaw({9, 1, 0, 0}).addStructure(9, kSlot, {"Slot 3"}).bytes(),
         9, std::string("9 1 0 Undefined 0 0 0 0 0 0 0 0 0 0;") + kSlotText},
        {"length past the table",
         SmbiosImage(bios).addStructure(9, kSlot, {"Slot 3"}).addRaw({9, 200, 1, 0, 1}).withoutEndOfTable().bytes(), 9,
         kSlotText},
        {"no closing pair",
         SmbiosImage(bios).addStructure(9, kSlot, {"Slot 3"}).addRaw({9, 5, 2, 0, 1, 'S'}).withoutEndOfTable().bytes(),
         9, kSlotText},
        {"table length ending inside a structure",
         SmbiosImage(bios)
             .addStructure(9, kSlot, {"Slot 3"})
             .addStructure(9, kSlot, {"Slot 4"})
             .setTableLength(uint16_t(good.size() - 33))
             .bytes(),
         9, kSlotText},
        {"table length beyond what was read",
         SmbiosImage(bios).addStructure(9, kSlot, {"Slot 3"}).setTableLength(0xFFFF).bytes(), 9, kSlotText},
        // The entry point: "_SM_" on a 4-byte boundary within the first 64 KiB, and its fields inside what was read.
        {"empty device", {}, 1, "open -1"},
        {"no anchor", Bytes(4096, '_'), 1, "open -1"},
        {"anchor off a 4-byte boundary", SmbiosImage(bios).setEntryOffset(2).bytes(), 0, "open -1"},
        {"anchor beyond 64 KiB", SmbiosImage(bios).setEntryOffset(0x10000).bytes(), 0, "open -1"},
        {"anchor without its table length field", withEntry(good, 0, '_', 0x17), 0, "open -1"},
        {"table said to start past the end", withEntry(good, 5, 0xFF, 0x40), 0, "open -1"},
    };
    for (const auto& [name, image, type, expected] : cases) {
        install(image);
        EXPECT_EQ(smbiosOpen() == 0 ? dump(type) : "open " + dump(1), expected) << name;
    }
}

TEST_F(SmbiosTest, SecondOpenKeepsTheHeldTableAndCloseGivesItUp) {
    install(system(27, "FIRST").bytes());
    ASSERT_EQ(smbiosOpen(), 0);
    zuvtest::writeFile(smbiosDevicePath, "");
    EXPECT_EQ(smbiosOpen(), 0);
    void* table = nullptr;
    EXPECT_EQ(smbiosGetRecords(1, &table, nullptr), 0) << "count may be null";
    EXPECT_STREQ(static_cast<smbiosSystemInfo*>(table)->family, "FIRST");
    free(table);
    smbiosClose();
    EXPECT_EQ(dump(1), "-1");
    smbiosClose();
}

TEST_F(SmbiosTest, StringNumbersAndUuidTexts) {
    Bytes structure = {2, 4, 0, 0, 'p', 0, 'a', 0x7f, 'b', 0x80, 0, 0x01, 0xff, 0, 0};
    auto* header = reinterpret_cast<smbiosHeader*>(structure.data());
    const std::pair<int, const char*> strings[] = {{0, "Undefined"}, {1, "p"},         {2, "a.b."},
                                                   {3, ".."},        {4, "Undefined"}, {200, "Undefined"}};
    for (const auto& [index, text] : strings) EXPECT_STREQ(smbiosGetString(header, 4, index), text) << index;
    EXPECT_EQ(structure[7], '.') << "replaced in place";
    const std::pair<uint16_t, const char*> uuids[] = {{0xD011, "01020304-0506-11d0-0809-0a0b0c0d0e0f"},
                                                      {0x11D0, "04030201-0605-11d0-0809-0a0b0c0d0e0f"},
                                                      {0x0000, "04030201-0605-0000-0809-0a0b0c0d0e0f"},
                                                      {0xFFFF, "04030201-0605-ffff-0809-0a0b0c0d0e0f"},
                                                      {0xF031, "01020304-0506-31f0-0809-0a0b0c0d0e0f"}};
    for (const auto& [data3, text] : uuids) {
        const uint8_t bytes[16] = {1, 2, 3, 4, 5, 6, uint8_t(data3), uint8_t(data3 >> 8), 8, 9, 10, 11, 12, 13, 14, 15};
        EXPECT_EQ(smbiosUuidText(bytes), text);
    }
}

TEST_F(SmbiosTest, PrintSlotsWritesEveryFieldOfEachRecord) {
    install(SmbiosImage().addBios().addStructure(9, kSlot, {"Slot 3"}).addStructure(9, kSlot, {}).bytes());
    ASSERT_EQ(smbiosOpen(), 0);
    void* table = nullptr;
    ASSERT_EQ(smbiosGetRecords(9, &table, nullptr), 0);
    testing::internal::CaptureStdout();
    smbiosPrintSlots(static_cast<smbiosSystemSlot*>(table), 2);
    const std::string printed = testing::internal::GetCapturedStdout();
    free(table);
    EXPECT_EQ(printed.substr(0, printed.find("System Slot record #2")),
              "System Slot record #1  (Type 9)\n"
              "   Handle              : 0x0001\n"
              "   Length              : 17\n"
              "   designation         : Slot 3\n"
              "   type                : 165\n"
              "   busDataWidth        : 11\n"
              "   currentUsage        : 3\n"
              "   length              : 4\n"
              "   id                  : 4660\n"
              "   characteristics1    : 0xc\n"
              "   characteristics2    : 0x5\n"
              "   segmentGroupNum     : 0x102\n"
              "   busNum              : 0x3b\n"
              "   devFuncNum          : 0x1a\n\n");
    EXPECT_NE(printed.find("System Slot record #2  (Type 9)\n   Handle              : 0x0002\n"), std::string::npos);
}

TEST_F(SmbiosTest, ConcurrentLookupsSeeTheSameRecords) {
    install(SmbiosImage().addBios().addStructure(9, kSlot, {"Slot\x7f"}).bytes());
    ASSERT_EQ(smbiosOpen(), 0);
    std::vector<std::string> seen(4);
    std::vector<std::thread> threads;
    for (std::string& text : seen) threads.emplace_back([&text] { text = dump(9); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(seen, std::vector<std::string>(4, "9 17 1 Slot. a5 b 3 4 1234 c 5 102 3b 1a;"));
}

TEST_F(SmbiosTest, VMwareAccessGivesFamilyManufacturerAndPlatformCode) {
    const std::pair<std::string, int32_t> cases[] = {
        {"PLATFAMILY00001", 0},  {"PLATFAMILY00002", 1},   {"PLATFAMILY00003", 2}, {"PLATFAMILY00004", 4},
        {"platfamily00004", -1}, {"PLATFAMILY000010", -1}, {"PLATFAMILY0000", -1},
    };
    for (const auto& [family, code] : cases) {
        install(system(27, family).bytes());
        SMBIOSVMware smbios;
        EXPECT_EQ(smbios.getPlatform(), code) << family;
        EXPECT_EQ(smbios.getFamily(), family);
        EXPECT_EQ(smbios.getManufacturer(), "M");
        void* table = nullptr;
        unsigned count = 0;
        EXPECT_EQ(smbios.getSmbiosTable(41, &table, &count), -1);
        EXPECT_EQ(smbios.getSmbiosTable(1, &table, &count), 0);
        EXPECT_EQ(count, 1u);
        free(table);
    }
    for (const Bytes& image : {Bytes(), SmbiosImage().addBios().bytes()}) {  // no device; no type 1 structure
        install(image);
        if (image.empty()) unlink(smbiosDevicePath);
        SMBIOSVMware smbios;
        EXPECT_THROW(smbios.getFamily(), smbios_exceptions::not_initialized);
        EXPECT_THROW(smbios.getManufacturer(), smbios_exceptions::not_initialized);
        try {
            smbios.getPlatform();
            ADD_FAILURE() << "getPlatform must throw";
        } catch (const std::runtime_error& e) {
            EXPECT_STREQ(e.what(), "Couldnot Fetch the Platform details");
        }
    }
}
