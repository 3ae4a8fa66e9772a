// The tables whose rows carry platform tests: the storage controllers with their look-up, and the
// GeoID rules.

#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <string>

#include "platform/zuvPlatformCode.h"
#include "tables/zuvDeviceLocationRules.h"
#include "tables/zuvStorageControllers.h"
#include "zuvProcess.h"

namespace {

using namespace zuvSASRM;

struct NoKey : zuvDL::IDeviceLocationKey {};
int32_t platformCode = -1;

// The codes on which a platform test holds, of 0, 1, 2, 4 and -1: "012" for 0, 1 and 2.
std::string codesWhereTrue(const std::function<bool()>& test) {
    zuvPlatformCodeSourceHook = [] { return platformCode; };  // in place of the platform layer
    std::string codes;
    for (int32_t code : {0, 1, 2, 4, -1})
        if (platformCode = code, test()) codes += std::to_string(code);
    return codes;
}

}  // namespace

TEST(PlatformTests, WithoutThePlatformLayerAPlatformTestThrowsAsWhenThePlatformCantBeRead) {
    zuvPlatformCodeSourceHook = nullptr;  // as in a process without the platform layer
    EXPECT_EQ(zuvtest::thrown([] { storageControllers[0].isApplicable(); }),
              "std::runtime_error: Couldnot Fetch the Platform details");
}

TEST(StorageControllers, RowsInTheirOrderAndTheRowInGeneralThatTheLookUpFindsPerPlatform) {
    // Per run of rows of one chip and class: the codes on which each row holds, its name, and the
    // codes on which the look-up finds a row for the chip: always the run's last row.
    std::string rows, chip;
    for (std::size_t i = 0; i < storageControllerCount; ++i) {
        const zuvStorageControllerRecord& row = storageControllers[i];
        char rowChip[32];
        std::snprintf(rowChip, sizeof rowChip, "%04x:%04x %d:", row.vendorId, row.deviceId, row.controllerClass);
        if (rowChip != chip) rows += (rows.empty() ? "" : "\n") + (chip = rowChip);
        rows += " " + codesWhereTrue(row.isApplicable) + (*row.name ? " \"" + std::string(row.name) + "\"" : "");
        // Rows in general have no subsystem ids nor numbers, and this tree lacks the server maker's
        // data of its products (rows 5, 6, 8, 9, 11 to 22).
        EXPECT_EQ(row.subVendorId | row.subDeviceId | *row.sparePartNumber | *row.optionNumber, 0) << "row " << i + 1;
        if (i + 1 == storageControllerCount || storageControllers[i + 1].deviceId != row.deviceId)
            rows += " found:" + codesWhereTrue([&] {
                        const zuvStorageControllerRecord* found =
                            findStorageController(row.vendorId, row.deviceId, 0x1590, 0x41);
                        EXPECT_TRUE(found == nullptr || found == &row) << "row " << found - storageControllers + 1;
                        return found != nullptr;
                    });
    }
    EXPECT_EQ(rows, R"(8086:2826 1: 012 "Intel C600/X79 series chipset SATA RAID Controller" found:012
8086:2827 1: 4 "Intel C610/X99 series chipset sSATA RAID Controller" found:4
8086:1bf2 1: 4 "Intel C610/X99 series chipset sSATA RAID Controller" found:4
8086:a1d2 1: 4 "Intel C610/X99 series chipset sSATA RAID Controller" found:4
1000:005d 2: 01 01 01 "Broadcom / LSI MegaRAID SAS-3 3108 [Invader]" found:01
1000:10e2 2: 2 2 2 "Broadcom / LSI MegaRAID 12GSAS/PCIe Secure SAS39xx" found:2
1000:00a5 2: 4 4 4 found:
9005:028f 4: 012 01 2 2 2 24 4 4 4 0124 "Adaptec Smart Storage PQI 12G SAS/PCIe 3 Controller" found:0124
8086:28c0 8: 4 "Intel Corporation Volume Management Device NVMe RAID Controller" found:4)");
}

TEST(StorageControllers, LookUpPrefersANamedProductRowOnItsPlatform) {
    const auto yes = [] { return true; };
    const zuvStorageControllerRecord rows[] = {{yes, 0x1000, 0x005d, 0, 0, "", "", 2, "chip"},
                                               {yes, 0x1000, 0x005d, 0x1590, 1, "P1", "O1", 2, "product"},
                                               {yes, 0x1000, 0x005d, 0x1590, 2, "", "", 2, ""},  // no maker data
                                               {[] { return false; }, 0x1000, 0x005d, 0x1590, 3, "P", "O", 2, "off"},
                                               {yes, 0x1000, 0x005d, 0, 0, "", "", 2, "second row in general"}};
    for (const auto& [subIds, name] :  // the subsystem ids that the controller reports
         {std::pair{0x15900001u, "product"}, {0x15910001u, "chip"}, {0x15900002u, "chip"}, {0x15900003u, "chip"}}) {
        const auto* row = findStorageController(0x1000, 0x005d, subIds >> 16, subIds & 0xffff, rows, 5);
        EXPECT_STREQ(row ? row->name : "-", name) << std::hex << subIds;
    }
}

TEST(GeoIdRules, EachRuleFindsItsOwnFormOnlyWithItsFieldsAndAppliesOnItsPlatforms) {
    std::string found;  // per rule: type, mask, fields, flags, platforms, then what it finds in each GeoID
    for (zuvDL::_ZUV_IO_GEOID_EXTRACTION_RULE rule : zuvDL::geoIdExtractionRules) {
        // The table compiles nothing itself.
        EXPECT_TRUE(rule.compiledExpression.mark_count() == 0 &&
                    rule.compiledExpression.flags() == std::regex::ECMAScript);
        bool flag = false;
        NoKey key;
        found += std::to_string(rule.geoIdType) + " " + rule.mask + " " + std::to_string(rule.fieldCount) + " " +
                 std::to_string(rule.flags) + " " +
                 codesWhereTrue([&] { return rule.isApplicable(rule, flag, key, "PCIe Slot", {}); }) + ":";
        const std::regex expression(rule.expression, std::regex::ECMAScript);
        for (const std::string geoId :
             {"r001i02s03", "r001u02p3i04", "r001u02p3o4", "r001u02p3x5y06", "r001u02p3i04x5y06"}) {
            std::smatch match;  // inside a text, but never glued to a letter, digit or underscore
            const bool glued = std::regex_search(geoId + "a", expression) || std::regex_search("_" + geoId, expression);
            const std::string text = "PCIe Slot " + geoId + " x8";
            found += std::regex_search(text, match, expression) && !glued ? " " : " -";
            for (std::size_t g = 1; g < match.size(); ++g) found += match.str(g) + (g + 1 < match.size() ? "," : "");
        }
        found += "\n";
    }
    // The fields follow the whole GeoID, leading zeros kept.
    EXPECT_EQ(found, R"(1 r...i..s.. 3 0 01: r001i02s03,001,02,03 - - - -
2 r...u..p.i.. 4 0 24: - r001u02p3i04,001,02,3,04 - - -
4 r...u..p.o. 4 0 4: - - r001u02p3o4,001,02,3,4 - -
5 r...u..p.x.y.. 5 0 4: - - - r001u02p3x5y06,001,02,3,5,06 -
6 r...u..p.i..x.y.. 6 0 4: - - - - r001u02p3i04x5y06,001,02,3,04,5,06
)");
}
