// The vendor table: every pair of the stated list in the map, and names as the list gives them.

#include <gtest/gtest.h>

#include <string>

#include "tables/zuvPciVendorNames.h"

TEST(PciVendorNames, MapHoldsEachPairOfTheStatedListOnceAndNamesAsTheListGivesThem) {
    EXPECT_STREQ(pciVendorNamesListVersion, "2023.04.10");
    std::size_t pairs = 0;
    forEachPciVendorName([&](std::string_view key, std::string_view name) {
        const auto found = pciVendorNames.find(key);
        EXPECT_EQ(found == pciVendorNames.end() ? "-" : found->second, name) << key;
        ++pairs;
    });
    EXPECT_EQ(
        std::to_string(pairs) + " " + std::to_string(pciVendorNameCount) + " " + std::to_string(pciVendorNames.size()),
        "2325 2325 2325");
    // First and last lines, the list's marks, bytes that the generator escapes; no entry for
    // another form of a key (a reader strips "0x" and lowers the case). Any string type finds.
    std::string names;
    for (const std::string key : {"0001", "0010", "fffe", "ffff", "1052", "15cf", "1c63", "abcd", "ABCD", "0x1000"}) {
        const auto found = pciVendorNames.find(key);
        names += key + "=" + (found == pciVendorNames.end() ? "-" : std::string(found->second)) + "|";
    }
    EXPECT_EQ(names,
              "0001=SafeNet (wrong ID)|0010=Allied Telesis, Inc (Wrong ID)|fffe=VMWare Inc (temporary ID)|"
              "ffff=Illegal Vendor ID|1052=?Young Micro Systems|15cf=Hilscher Gesellschaft f\xc3\xbcr "
              "Systemautomation mbH|1c63=Science and Research Centre of Computer Technology (JSC \"NICEVT\")|"
              "abcd=Vadatech Inc.|ABCD=-|0x1000=-|");
}
