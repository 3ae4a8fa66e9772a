// The storage controller rows: ids, classes, texts, and which platform test each row carries.

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "platformCodeProbe.h"
#include "tables/zuvStorageControllers.h"

namespace {

using Codes = std::set<int32_t>;
const int32_t allCodes[] = {0, 1, 2, 4, -1};

// The codes on which a platform test holds, by evaluating it under each code.
template <typename Test>
Codes codesWhereTrue(const Test& test) {
    Codes holds;
    for (int32_t code : allCodes) {
        zuvtablestest::setPlatformCode(code);
        if (test()) holds.insert(code);
    }
    zuvtablestest::setPlatformCode(-1);
    return holds;
}

const Codes on0Or1Or2{0, 1, 2}, on0Or1{0, 1}, on2{2}, on4{4}, on2Or4{2, 4}, on0Or1Or2Or4{0, 1, 2, 4};

struct Row {
    Codes platforms;
    uint16_t vendorId, deviceId;
    uint8_t controllerClass;
    const char* name;  // nullptr for a product row of the server maker
};

const Row expectedRows[zuvSASRM::storageControllerCount] = {
    {on0Or1Or2, 0x8086, 0x2826, 1, "Intel C600/X79 series chipset SATA RAID Controller"},
    {on4, 0x8086, 0x2827, 1, "Intel C610/X99 series chipset sSATA RAID Controller"},
    {on4, 0x8086, 0x1bf2, 1, "Intel C610/X99 series chipset sSATA RAID Controller"},
    {on4, 0x8086, 0xa1d2, 1, "Intel C610/X99 series chipset sSATA RAID Controller"},
    {on0Or1, 0x1000, 0x005d, 2, nullptr},
    {on0Or1, 0x1000, 0x005d, 2, nullptr},
    {on0Or1, 0x1000, 0x005d, 2, "Broadcom / LSI MegaRAID SAS-3 3108 [Invader]"},
    {on2, 0x1000, 0x10e2, 2, nullptr},
    {on2, 0x1000, 0x10e2, 2, nullptr},
    {on2, 0x1000, 0x10e2, 2, "Broadcom / LSI MegaRAID 12GSAS/PCIe Secure SAS39xx"},
    {on4, 0x1000, 0x00a5, 2, nullptr},
    {on4, 0x1000, 0x00a5, 2, nullptr},
    {on4, 0x1000, 0x00a5, 2, nullptr},
    {on0Or1Or2, 0x9005, 0x028f, 4, nullptr},
    {on0Or1, 0x9005, 0x028f, 4, nullptr},
    {on2, 0x9005, 0x028f, 4, nullptr},
    {on2, 0x9005, 0x028f, 4, nullptr},
    {on2, 0x9005, 0x028f, 4, nullptr},
    {on2Or4, 0x9005, 0x028f, 4, nullptr},
    {on4, 0x9005, 0x028f, 4, nullptr},
    {on4, 0x9005, 0x028f, 4, nullptr},
    {on4, 0x9005, 0x028f, 4, nullptr},
    {on0Or1Or2Or4, 0x9005, 0x028f, 4, "Adaptec Smart Storage PQI 12G SAS/PCIe 3 Controller"},
    {on4, 0x8086, 0x28c0, 8, "Intel Corporation Volume Management Device NVMe RAID Controller"},
};

}  // namespace

TEST(StorageControllers, ClosuresForwardToTheirPlatformTests) {
    EXPECT_EQ(codesWhereTrue(zuvSASRM::onPlatform0Or1Or2), on0Or1Or2);
    EXPECT_EQ(codesWhereTrue(zuvSASRM::onPlatform0Or1), on0Or1);
    EXPECT_EQ(codesWhereTrue(zuvSASRM::onPlatform2), on2);
    EXPECT_EQ(codesWhereTrue(zuvSASRM::onPlatform4), on4);
    EXPECT_EQ(codesWhereTrue(zuvSASRM::onPlatform2Or4), on2Or4);
    EXPECT_EQ(codesWhereTrue(zuvSASRM::onPlatform0Or1Or2Or4), on0Or1Or2Or4);
}

TEST(StorageControllers, RowsInTheirOrderWithIdsClassesAndPlatforms) {
    for (std::size_t i = 0; i < zuvSASRM::storageControllerCount; ++i) {
        SCOPED_TRACE("row " + std::to_string(i + 1));
        const auto& row = zuvSASRM::storageControllers[i];
        const Row& expected = expectedRows[i];
        EXPECT_EQ(codesWhereTrue(row.isApplicable), expected.platforms);
        EXPECT_EQ(row.vendorId, expected.vendorId);
        EXPECT_EQ(row.deviceId, expected.deviceId);
        EXPECT_EQ(row.controllerClass, expected.controllerClass);
        // Texts are never null, so a reader can print or compare any row.
        ASSERT_NE(row.sparePartNumber, nullptr);
        ASSERT_NE(row.optionNumber, nullptr);
        ASSERT_NE(row.name, nullptr);
        if (expected.name != nullptr) {
            // A chip in general: exact name, no numbers, no subsystem.
            EXPECT_STREQ(row.name, expected.name);
            EXPECT_STREQ(row.sparePartNumber, "");
            EXPECT_STREQ(row.optionNumber, "");
            EXPECT_EQ(row.subVendorId, 0);
            EXPECT_EQ(row.subDeviceId, 0);
        }
    }
}

TEST(StorageControllers, OnUnknownPlatformNoRowHolds) {
    zuvtablestest::setPlatformCode(-1);
    for (const auto& row : zuvSASRM::storageControllers) EXPECT_FALSE(row.isApplicable());
}

TEST(StorageControllers, ARowInGeneralStandsBehindEveryOtherRowOfItsChip) {
    for (std::size_t i = 0; i < zuvSASRM::storageControllerCount; ++i) {
        if (expectedRows[i].name == nullptr) continue;
        const auto& general = zuvSASRM::storageControllers[i];
        for (std::size_t j = i + 1; j < zuvSASRM::storageControllerCount; ++j) {
            const auto& later = zuvSASRM::storageControllers[j];
            EXPECT_FALSE(later.vendorId == general.vendorId && later.deviceId == general.deviceId)
                << "row " << j + 1 << " follows the row in general " << i + 1;
        }
    }
}
