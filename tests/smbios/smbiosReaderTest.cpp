// Decoding of well-formed tables: the three record types, strings, UUIDs, printing.
#include <atomic>
#include <cstring>
#include <string>
#include <thread>

#include "platform/zuvSmbiosUuid.h"
#include "smbiosFixture.h"

using smbiostest::Records;
using smbiostest::SmbiosTest;

namespace {

zuvsim::SmbiosImage typicalHost() {
    zuvsim::SmbiosSystem system;
    system.manufacturer = "Maker Inc";
    system.productName = "Server X";
    system.version = "Rev B";
    system.serialNumber = "SER123";
    system.uuid = {0x44, 0x45, 0x4c, 0x4c, 0x34, 0x00, 0x10, 0x36, 0x80, 0x4b, 0xb2, 0xc0, 0x4f, 0x50, 0x33, 0x32};
    system.wakeUpType = 6;
    system.skuNumber = "SKU77";
    system.family = "PLATFAMILY00004";
    zuvsim::SmbiosSlot slot;
    slot.designation = "PCIe Slot 3";
    slot.type = 0xA5;
    slot.busDataWidth = 0x0B;
    slot.currentUsage = 3;
    slot.slotLength = 4;
    slot.id = 0x1234;
    slot.characteristics1 = 0x0C;
    slot.characteristics2 = 0x05;
    slot.segmentGroupNum = 0x0102;
    slot.busNum = 0x3B;
    slot.devFuncNum = 0x1A;
    zuvsim::SmbiosOnboard nic;
    nic.referenceDesignation = "Embedded NIC 2";
    nic.deviceType = 5;
    nic.enabled = true;
    nic.deviceTypeInstance = 2;
    nic.segmentGroupNum = 0x0201;
    nic.busNum = 0x19;
    nic.deviceNum = 0x1F;
    nic.functionNum = 5;
    zuvsim::SmbiosImage image;
    image.setEntryOffset(64).addBios().addSlot(zuvsim::SmbiosSlot()).addType1(system).addSlot(slot).addOnboard(nic);
    return image;
}

}  // namespace

TEST_F(SmbiosTest, DecodesSystemSlotAndOnboardRecordsOfATypicalHost) {
    open(typicalHost());

    Records<smbiosSystemInfo> info(1);
    ASSERT_EQ(info.status, 0);
    ASSERT_EQ(info.count, 1u);
    EXPECT_EQ(info[0].recordType, 1);
    EXPECT_EQ(info[0].recordLength, 27);
    EXPECT_EQ(info[0].handle, 2);  // BIOS 0, first slot 1
    EXPECT_STREQ(info[0].manufacturer, "Maker Inc");
    EXPECT_STREQ(info[0].productName, "Server X");
    EXPECT_STREQ(info[0].version, "Rev B");
    EXPECT_STREQ(info[0].serialNumber, "SER123");
    EXPECT_STREQ(info[0].uuid, "4c4c4544-0034-3610-804b-b2c04f503332");
    EXPECT_EQ(info[0].wakeUpType, 6);
    EXPECT_STREQ(info[0].skuNumber, "SKU77");
    EXPECT_STREQ(info[0].family, "PLATFAMILY00004");

    Records<smbiosSystemSlot> slots(9);
    ASSERT_EQ(slots.status, 0);
    ASSERT_EQ(slots.count, 2u);
    EXPECT_STREQ(slots[0].designation, "PCIe Slot 1");
    const smbiosSystemSlot& s = slots[1];
    EXPECT_EQ(s.recordType, 9);
    EXPECT_EQ(s.recordLength, 17);
    EXPECT_EQ(s.handle, 3);
    EXPECT_STREQ(s.designation, "PCIe Slot 3");
    EXPECT_EQ(s.type, 0xA5);
    EXPECT_EQ(s.busDataWidth, 0x0B);
    EXPECT_EQ(s.currentUsage, 3);
    EXPECT_EQ(s.length, 4);
    EXPECT_EQ(s.id, 0x1234);
    EXPECT_EQ(s.characteristics1, 0x0C);
    EXPECT_EQ(s.characteristics2, 0x05);
    EXPECT_EQ(s.segmentGroupNum, 0x0102);
    EXPECT_EQ(s.busNum, 0x3B);
    EXPECT_EQ(s.devFuncNum, 0x1A);

    Records<smbiosOnboardDevice> devices(41);
    ASSERT_EQ(devices.status, 0);
    ASSERT_EQ(devices.count, 1u);
    const smbiosOnboardDevice& d = devices[0];
    EXPECT_EQ(d.recordType, 41);
    EXPECT_EQ(d.recordLength, 11);
    EXPECT_STREQ(d.referenceDesignation, "Embedded NIC 2");
    EXPECT_EQ(d.deviceType, 5) << "the enabled bit is dropped";
    EXPECT_EQ(d.deviceTypeInstance, 2);
    EXPECT_EQ(d.segmentGroupNum, 0x0201);
    EXPECT_EQ(d.busNum, 0x19);
    EXPECT_EQ(d.deviceNum, 0x1F);
    EXPECT_EQ(d.functionNum, 5);
}

TEST_F(SmbiosTest, SecondOpenKeepsTheHeldTableAndCloseGivesItUp) {
    open(zuvsim::SmbiosImage().addType1("FIRST"));
    smbiostest::installImage(zuvsim::SmbiosImage().addType1("SECOND"));
    EXPECT_EQ(smbiosOpen(), 0);
    EXPECT_STREQ(Records<smbiosSystemInfo>(1)[0].family, "FIRST");

    smbiosClose();
    EXPECT_EQ(Records<smbiosSystemInfo>(1).status, -1) << "no table is held after close";
    smbiosClose();  // harmless twice
    ASSERT_EQ(smbiosOpen(), 0);
    EXPECT_STREQ(Records<smbiosSystemInfo>(1)[0].family, "SECOND");
}

TEST_F(SmbiosTest, TypesWithoutStructuresOrWithoutRecordLayoutGiveNothing) {
    open(zuvsim::SmbiosImage().addBios().addType1("F"));
    for (int type : {9, 41, 0, 2, 127, 200}) {
        SCOPED_TRACE(type);
        Records<smbiosSystemSlot> records(type);
        EXPECT_EQ(records.status, -1);
        EXPECT_EQ(records.table, nullptr);
        EXPECT_EQ(records.count, 0u);
    }
    void* table = nullptr;
    EXPECT_EQ(smbiosGetRecords(1, &table, nullptr), 0) << "count may be null";
    EXPECT_NE(table, nullptr);
    free(table);
}

TEST_F(SmbiosTest, StringNumbersOutsideTheSetAndUnprintableBytes) {
    // A type 2 structure with four strings, outside any held table.
    std::vector<uint8_t> structure = {2, 8, 0, 0, 1, 2, 3, 4};
    for (const std::string& text : {std::string("plain"),
                                    std::string("a\x7f"
                                                "b\x80"
                                                "c"),
                                    std::string("tab\there"), std::string("\x01\xff")}) {
        structure.insert(structure.end(), text.begin(), text.end());
        structure.push_back(0);
    }
    structure.push_back(0);
    auto* header = reinterpret_cast<smbiosHeader*>(structure.data());
    struct Case {
        int index;
        const char* expected;
    } cases[] = {{0, "Undefined"}, {1, "plain"},     {2, "a.b.c"},      {3, "tab.here"},
                 {4, ".."},        {5, "Undefined"}, {200, "Undefined"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.index);
        EXPECT_STREQ(smbiosGetString(header, header->length, c.index), c.expected);
    }
    EXPECT_EQ(std::string(reinterpret_cast<char*>(structure.data()) + 8 + 6), "a.b.c") << "replaced in place";

    // The same rule through the records of a held table.
    zuvsim::SmbiosSlot slot;
    slot.designation = std::string("x\x7fy\x80z\x1f");
    open(zuvsim::SmbiosImage().addSlot(slot));
    EXPECT_STREQ(Records<smbiosSystemSlot>(9)[0].designation, "x.y.z.");
}

TEST_F(SmbiosTest, EmptyStringOfTheSetCountsAsUndefined) {
    // A set whose first string is empty is the end of the set already.
    std::vector<uint8_t> structure = {2, 5, 0, 0, 1, 0, 0};
    auto* header = reinterpret_cast<smbiosHeader*>(structure.data());
    EXPECT_STREQ(smbiosGetString(header, 5, 1), "Undefined");
    EXPECT_STREQ(smbiosGetString(header, 5, 2), "Undefined");
}

TEST_F(SmbiosTest, UuidIsSwappedOnlyForTheD011Pattern) {
    struct Case {
        uint8_t data3Low, data3High;
        const char* expected;
    } cases[] = {
        {0x11, 0xD0, "01020304-0506-11d0-0809-0a0b0c0d0e0f"},  // 0xD011: swapped
        {0xD0, 0x11, "04030201-0605-11d0-0809-0a0b0c0d0e0f"},  // 0x11D0: as read
        {0x00, 0x00, "04030201-0605-0000-0809-0a0b0c0d0e0f"},  // 0: as read
        {0xFF, 0xFF, "04030201-0605-ffff-0809-0a0b0c0d0e0f"},  // has both patterns: as read
        {0x31, 0xF0, "01020304-0506-31f0-0809-0a0b0c0d0e0f"},  // 0xF031 has 0xD011: swapped
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected);
        uint8_t bytes[16] = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, c.data3Low, c.data3High,
                             0x08, 0x09, 0x0a, 0x0b, 0x0c, 0x0d, 0x0e,       0x0f};
        EXPECT_EQ(smbiosUuidText(bytes), c.expected);
    }
    // Through the table, too.
    zuvsim::SmbiosUuid uuid = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x11, 0xD0, 8, 9, 10, 11, 12, 13, 14, 15};
    open(zuvsim::SmbiosImage().addType1("F", uuid));
    EXPECT_STREQ(Records<smbiosSystemInfo>(1)[0].uuid, "01020304-0506-11d0-0809-0a0b0c0d0e0f");
}

TEST_F(SmbiosTest, SystemInfoDecodesAsFarAsTheStructureLengthReaches) {
    struct Case {
        uint8_t length;
        const char* manufacturer;
        const char* uuid;
        uint8_t wakeUpType;
        const char* sku;
        const char* family;
    } cases[] = {
        {27, "Maker", "00000000-0000-0000-0000-000000000001", 6, "SKU", "FAM"},
        {25, "Maker", "00000000-0000-0000-0000-000000000001", 6, ".", ""},
        {26, "Maker", "00000000-0000-0000-0000-000000000001", 6, ".", ""},
        {24, "Maker", "", 0, "", ""},
        {8, "Maker", "", 0, "", ""},
        {7, "", "", 0, "", ""},
        {4, "", "", 0, "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(int(c.length));
        smbiosClose();
        zuvsim::SmbiosSystem system;
        system.manufacturer = "Maker";
        system.uuid[15] = 1;
        system.skuNumber = "SKU";
        system.family = "FAM";
        system.length = c.length;
        open(zuvsim::SmbiosImage().addType1(system));
        Records<smbiosSystemInfo> info(1);
        ASSERT_EQ(info.status, 0);
        EXPECT_EQ(info[0].recordLength, c.length);
        EXPECT_STREQ(info[0].manufacturer, c.manufacturer);
        EXPECT_STREQ(info[0].uuid, c.uuid);
        EXPECT_EQ(info[0].wakeUpType, c.wakeUpType);
        EXPECT_STREQ(info[0].skuNumber, c.sku);
        EXPECT_STREQ(info[0].family, c.family);
    }
}

TEST_F(SmbiosTest, ShortSlotLeavesSegmentBusAndDeviceAtZero) {
    for (uint8_t length : {13, 17}) {
        SCOPED_TRACE(int(length));
        smbiosClose();
        zuvsim::SmbiosSlot slot;
        slot.segmentGroupNum = 7;
        slot.busNum = 8;
        slot.devFuncNum = 9;
        slot.characteristics2 = 3;
        slot.length = length;
        open(zuvsim::SmbiosImage().addSlot(slot));
        Records<smbiosSystemSlot> slots(9);
        ASSERT_EQ(slots.status, 0);
        EXPECT_EQ(slots[0].characteristics2, 3);
        EXPECT_EQ(slots[0].segmentGroupNum, length == 17 ? 7 : 0);
        EXPECT_EQ(slots[0].busNum, length == 17 ? 8 : 0);
        EXPECT_EQ(slots[0].devFuncNum, length == 17 ? 9 : 0);
    }
}

TEST_F(SmbiosTest, StringsLongerThanTheirFieldAreCutAndTerminated) {
    zuvsim::SmbiosSystem system;
    system.family = std::string(100, 'F');
    system.manufacturer = std::string(64, 'M');
    system.productName = std::string(127, 'P');
    zuvsim::SmbiosSlot slot;
    slot.designation = std::string(250, 'D');
    open(zuvsim::SmbiosImage().addType1(system).addSlot(slot));
    Records<smbiosSystemInfo> info(1);
    EXPECT_EQ(std::string(info[0].family), std::string(63, 'F'));
    EXPECT_EQ(std::string(info[0].manufacturer), std::string(63, 'M'));
    EXPECT_EQ(std::string(info[0].productName), std::string(127, 'P'));
    EXPECT_EQ(info[0].version[0], '1') << "the next field is untouched";
    Records<smbiosSystemSlot> slots(9);
    EXPECT_EQ(std::string(slots[0].designation), std::string(127, 'D'));
    EXPECT_EQ(slots[0].type, 0xB6);
}

TEST_F(SmbiosTest, PrintSlotsWritesEveryFieldOfEachRecord) {
    zuvsim::SmbiosSlot slot;
    slot.designation = "Slot A";
    slot.id = 513;
    slot.busNum = 0x3b;
    slot.devFuncNum = 0x10;
    slot.segmentGroupNum = 0x1f;
    open(zuvsim::SmbiosImage().addSlot(slot).addSlot(zuvsim::SmbiosSlot()));
    Records<smbiosSystemSlot> slots(9);
    ASSERT_EQ(slots.count, 2u);
    testing::internal::CaptureStdout();
    smbiosPrintSlots(slots.table.get(), 1);
    std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(printed,
              "System Slot record #1  (Type 9)\n"
              "   Handle              : 0x0000\n"
              "   Length              : 17\n"
              "   designation         : Slot A\n"
              "   type                : 182\n"
              "   busDataWidth        : 13\n"
              "   currentUsage        : 4\n"
              "   length              : 4\n"
              "   id                  : 513\n"
              "   characteristics1    : 0x4\n"
              "   characteristics2    : 0x1\n"
              "   segmentGroupNum     : 0x1f\n"
              "   busNum              : 0x3b\n"
              "   devFuncNum          : 0x10\n"
              "\n");
    testing::internal::CaptureStdout();
    smbiosPrintSlots(slots.table.get(), 2);
    printed = testing::internal::GetCapturedStdout();
    EXPECT_NE(printed.find("System Slot record #2  (Type 9)\n   Handle              : 0x0001\n"), std::string::npos);
}

TEST_F(SmbiosTest, ConcurrentLookupsSeeTheSameRecords) {
    zuvsim::SmbiosSlot slot;
    slot.designation = std::string(
        "Slot\x7f"
        "A");
    open(zuvsim::SmbiosImage().addType1("PLATFAMILY00002").addSlot(slot).addSlot(slot));
    std::vector<std::thread> threads;
    std::atomic<int> good{0};
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&good] {
            for (int i = 0; i < 200; ++i) {
                Records<smbiosSystemSlot> slots(9);
                Records<smbiosSystemInfo> info(1);
                if (slots.count == 2 && std::string(slots[1].designation) == "Slot.A" &&
                    std::string(info[0].family) == "PLATFAMILY00002") {
                    ++good;
                }
            }
        });
    }
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(good.load(), 800);
}
