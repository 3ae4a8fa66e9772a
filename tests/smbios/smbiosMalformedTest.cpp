// Tables the reader must survive: it never reads outside what it read nor writes outside a
// field (ASan builds check that), and it keeps what can be decoded before the damage.
#include <random>
#include <string>

#include "smbiosFixture.h"

using smbiostest::Records;
using smbiostest::SmbiosTest;

namespace {

constexpr size_t kEntryLength = 31;

std::vector<uint8_t> withAnchorAt(size_t offset, size_t total) {
    std::vector<uint8_t> bytes(total, 0);
    std::copy_n("_SM_", 4, bytes.begin() + long(offset));
    return bytes;
}

}  // namespace

TEST_F(SmbiosTest, ImagesWithoutAUsableEntryPointAreRefused) {
    std::vector<uint8_t> valid = zuvsim::SmbiosImage().addType1("F").bytes();
    std::vector<uint8_t> misaligned = zuvsim::SmbiosImage().setEntryOffset(2).addType1("F").bytes();
    std::vector<uint8_t> farTable = valid;
    farTable[5] = 0xFF;  // table said to start past what was read
    farTable.resize(0x40);
    struct Case {
        const char* name;
        std::vector<uint8_t> bytes;
    } cases[] = {
        {"empty device", {}},
        {"no anchor", std::vector<uint8_t>(4096, 0x5F)},
        {"anchor off a 4-byte boundary", misaligned},
        {"anchor in the last four bytes", withAnchorAt(60, 64)},
        {"anchor without its table length field", withAnchorAt(0, 0x17)},
        {"table starts past the end", farTable},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        smbiostest::installImage(c.bytes);
        EXPECT_EQ(smbiosOpen(), -1);
        EXPECT_EQ(Records<smbiosSystemInfo>(1).status, -1);
    }
    smbiostest::installImage(valid);
    EXPECT_EQ(smbiosOpen(), 0) << "a failed open leaves nothing behind";
}

TEST_F(SmbiosTest, MissingDeviceIsRefused) {
    ::unlink(smbiosDevicePath);
    EXPECT_EQ(smbiosOpen(), -1);
}

TEST_F(SmbiosTest, DamagedTablesKeepTheStructuresBeforeTheDamage) {
    zuvsim::SmbiosImage good;
    good.addType1("BEFORE").addSlot(zuvsim::SmbiosSlot());
    std::vector<uint8_t> full = good.bytes();
    const size_t slotStart = good.table().size() - 6 - (4 + 13 + sizeof("PCIe Slot 1") + 1);

    std::vector<uint8_t> truncated(full.begin(), full.begin() + long(kEntryLength + slotStart + 10));

    zuvsim::SmbiosImage pastTable;
    pastTable.addType1("BEFORE").addRaw({9, 200, 1, 0, 1, 2, 3}).withoutEndOfTable();

    zuvsim::SmbiosImage shortLength;
    shortLength.addType1("BEFORE").addRaw({9, 2, 1, 0, 0, 0}).addSlot(zuvsim::SmbiosSlot());

    zuvsim::SmbiosImage unclosed;
    unclosed.addType1("BEFORE")
        .addRaw({9, 17, 1, 0, 1, 0xB6, 0x0D, 4, 4, 1, 0, 4, 1, 0, 0, 0, 0})
        .addRaw({'S', 'l', 'o', 't'})
        .withoutEndOfTable();

    zuvsim::SmbiosImage shortTableLength;
    shortTableLength.addType1("BEFORE").addSlot(zuvsim::SmbiosSlot()).setTableLength(uint16_t(slotStart + 4));

    zuvsim::SmbiosImage longTableLength;
    longTableLength.addType1("BEFORE").addSlot(zuvsim::SmbiosSlot()).setTableLength(0xFFFF);

    struct Case {
        const char* name;
        std::vector<uint8_t> bytes;
        unsigned slots;
    } cases[] = {
        {"image cut inside the second structure", truncated, 0},
        {"structure length past the table", pastTable.bytes(), 0},
        {"structure length below its header", shortLength.bytes(), 0},
        {"string set without its closing NUL pair", unclosed.bytes(), 0},
        {"table length ending inside a structure", shortTableLength.bytes(), 0},
        {"table length beyond what was read", longTableLength.bytes(), 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        smbiosClose();
        smbiostest::installImage(c.bytes);
        ASSERT_EQ(smbiosOpen(), 0);
        Records<smbiosSystemInfo> info(1);
        ASSERT_EQ(info.status, 0);
        EXPECT_STREQ(info[0].family, "BEFORE");
        Records<smbiosSystemSlot> slots(9);
        EXPECT_EQ(slots.count, c.slots);
        EXPECT_EQ(slots.status, c.slots ? 0 : -1);
    }
}

TEST_F(SmbiosTest, OnlyTheFirst64KiBOfTheDeviceAreRead) {
    zuvsim::SmbiosImage image;
    image.setEntryOffset(0x10000).addType1("BEYOND");
    smbiostest::installImage(image);
    EXPECT_EQ(smbiosOpen(), -1);

    // A table that runs over the end of the buffer is cut there.
    zuvsim::SmbiosImage edge;
    edge.setEntryOffset(0x10000 - 0x100).addType1("EDGE");
    for (int i = 0; i < 20; ++i) edge.addSlot(zuvsim::SmbiosSlot());
    smbiosClose();
    smbiostest::installImage(edge);
    ASSERT_EQ(smbiosOpen(), 0);
    EXPECT_STREQ(Records<smbiosSystemInfo>(1)[0].family, "EDGE");
    Records<smbiosSystemSlot> slots(9);
    EXPECT_GT(slots.count, 0u);
    EXPECT_LT(slots.count, 20u);
}

TEST_F(SmbiosTest, RandomlyDamagedImagesNeverLeaveTheBuffer) {
    zuvsim::SmbiosSystem system;
    system.family = "PLATFAMILY00002";
    std::vector<uint8_t> base = zuvsim::SmbiosImage()
                                    .addBios()
                                    .addType1(system)
                                    .addSlot(zuvsim::SmbiosSlot())
                                    .addOnboard(zuvsim::SmbiosOnboard())
                                    .addStructure(2, {1, 2}, {"Board", "Rev"})
                                    .bytes();
    std::mt19937 random(20261123);
    for (int round = 0; round < 400; ++round) {
        std::vector<uint8_t> bytes = base;
        int damage = 1 + int(random() % 6);
        for (int i = 0; i < damage; ++i) {
            size_t at = kEntryLength + random() % (bytes.size() - kEntryLength);
            bytes[at] = uint8_t(random());
        }
        if (random() % 4 == 0) bytes.resize(kEntryLength + random() % (bytes.size() - kEntryLength));
        smbiosClose();
        smbiostest::installImage(bytes);
        ASSERT_EQ(smbiosOpen(), 0);
        for (int type : {1, 9, 41}) {
            Records<smbiosSystemInfo> records(type);
            EXPECT_EQ(records.status == 0, records.count > 0);
        }
    }
}
