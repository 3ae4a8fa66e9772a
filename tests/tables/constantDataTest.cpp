// The tables without platform tests: the vendor names against the stated list, the storage
// vocabulary, and the drive catalogue's reader on rows made here (the catalogue holds none).

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tables/zuvDriveCatalogue.h"
#include "tables/zuvPciVendorNames.h"
#include "tables/zuvStorageStatusNames.h"

TEST(PciVendorNames, MapHoldsEachPairOfTheStatedListOnceAndNamesAsTheListGivesThem) {
    EXPECT_STREQ(pciVendorNamesListVersion, "2023.04.10");
    std::size_t pairs = 0;
    auto walk = pciVendorNames.begin();  // the map walks its keys as the list has them: ascending text
    forEachPciVendorName([&](std::string_view key, std::string_view name) {
        const auto found = pciVendorNames.find(key);
        EXPECT_EQ(found == pciVendorNames.end() ? "-" : found->second, name) << key;
        EXPECT_TRUE(walk != pciVendorNames.end() && found == walk++) << key;
        ++pairs;
    });
    EXPECT_EQ(
        std::to_string(pairs) + " " + std::to_string(pciVendorNameCount) + " " + std::to_string(pciVendorNames.size()),
        "2325 2325 2325");
    // First and last lines, the list's marks, bytes that the generator escapes; no entry for
    // another form of a key (a reader strips "0x" and lowers the case). Any string type finds;
    // a copy of a name, made after the map, is the reader's own to free.
    std::string names;
    for (const std::string key : {"0001", "0010", "fffe", "ffff", "1052", "15cf", "1c63", "abcd", "ABCD", "0x1000"}) {
        const auto found = pciVendorNames.find(key);
        names += key + "=" + (found == pciVendorNames.end() ? "-" : std::string(zuvPciVendorName(found->second))) + "|";
    }
    EXPECT_EQ(names,
              "0001=SafeNet (wrong ID)|0010=Allied Telesis, Inc (Wrong ID)|fffe=VMWare Inc (temporary ID)|"
              "ffff=Illegal Vendor ID|1052=?Young Micro Systems|15cf=Hilscher Gesellschaft f\xc3\xbcr "
              "Systemautomation mbH|1c63=Science and Research Centre of Computer Technology (JSC \"NICEVT\")|"
              "abcd=Vadatech Inc.|ABCD=-|0x1000=-|");
}

TEST(StorageStatusNames, EveryArrayHoldsItsTextsInOrder) {
    const auto joined = [](const auto& array) {  // every entry of the array, by its declared size
        std::string text;
        for (const char* entry : array) text += (text.empty() ? "" : "|") + std::string(entry);
        return text;
    };
    EXPECT_EQ(
        joined(healthNames) + "\n" + joined(statusNames) + "\n" + joined(protocolNames) + "\n" +
            joined(adapterAttributePaths) + "\n" + joined(adapterParentAttributePaths),
        "Unknown|Critical|OK|Warning\n"
        "Unknown|Bypassed|Cancel|Cancel/Recovery|Created|Degraded|Deleted|Deleted/Recovery|Diagnostic mode|"
        "Disabled|Down|Error|Failed|Initializing|Linkdown|Loopback|Offline|Online|Optimal|Other|Partially "
        "degraded|Predictive failure|Rebuild|Recovering|Recovery|Running|Unconfigured bad\n"
        "Fibre Channel|Parallel SCSI|SSA|IEEE 1394|SCSI RDMA Protocol|iSCSI|SAS|ADT|ATA|UAS|SOP|0xb|0xc|0xd|0xe|0xf\n"
        "/device/../device|/device/../vendor|/device/../subsystem_device|/device/../subsystem_vendor|"
        "/board_tracer|/unique_id|/version_fw|/version_bios|/model|/state|/proc_name|/firmware_revision\n"
        "/device/../../subsystem_device|/device/../../subsystem_vendor|/device/../../vendor|/device/../../device");
}

TEST(DriveCatalogue, FindsByEitherModelNumberAndNeverByAnEmptyField) {
    const std::string w40(40, 'W'), w41(41, 'W');
    zuvDriveCatalogueEntry rows[4] = {};  // model numbers: the maker's, the manufacturer's
    const std::string numbers[] = {"EG000300JWEBF", "ST300MM0048", "", "MZ7KH960HAJR", "MB2000GCWDA", "", w40, ""};
    for (int i = 0; i < 8; ++i)
        std::strcpy(i % 2 ? rows[i / 2].vendorModelNumber : rows[i / 2].modelNumber, numbers[i].c_str());
    // A number of the widest a field holds is found; one wider is not, though its first 40 fit.
    const std::pair<const char*, int> cases[] = {
        {"EG000300JWEBF", 0}, {"ST300MM0048", 0}, {"MZ7KH960HAJR", 1}, {"MB2000GCWDA", 2},   {w40.c_str(), 3},
        {w41.c_str(), -1},    {"", -1},           {nullptr, -1},       {"EG000300JWEB", -1}, {"EG000300JWEBFX", -1},
        {"eg000300jwebf", -1}};
    for (const auto& [number, index] : cases)
        EXPECT_EQ(findDriveCatalogueEntry(number, rows, 4), index < 0 ? nullptr : &rows[index])
            << (number ? number : "null");
    // A damaged row whose field lacks its NUL is not read past its end.
    std::memset(rows[2].modelNumber, 'D', sizeof rows[2].modelNumber);
    EXPECT_EQ(findDriveCatalogueEntry(std::string(41, 'D').c_str(), &rows[2], 1), nullptr);
    EXPECT_EQ(findDriveCatalogueEntry(std::string(40, 'D').c_str(), &rows[2], 1), nullptr);
    EXPECT_EQ(findDriveCatalogueEntry(""), nullptr);
}
