// The vendor table against the PCI ID list it was generated from.

#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "tables/zuvPciVendorNames.h"

namespace {

bool isTableKey(const std::string& key) {
    if (key.size() != 4) return false;
    for (char c : key) {
        if (!std::isdigit(static_cast<unsigned char>(c)) && !(c >= 'a' && c <= 'f')) return false;
    }
    return true;
}

struct PciIdList {
    bool present = false;
    std::string version;
    std::vector<std::pair<std::string, std::string>> vendors;  // in the order of the list
};

// Vendor lines are the lines that start with four hexadecimal digits and two blanks;
// device lines start with a tab, class lines with "C ".
PciIdList readPciIdList(const char* path) {
    PciIdList list;
    std::ifstream in(path, std::ios::binary);
    if (!in) return list;
    list.present = true;
    const std::string versionMark = "#\tVersion: ";
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (list.version.empty() && line.compare(0, versionMark.size(), versionMark) == 0)
            list.version = line.substr(versionMark.size());
        if (line.size() >= 6 && std::isxdigit(static_cast<unsigned char>(line[0])) &&
            std::isxdigit(static_cast<unsigned char>(line[1])) && std::isxdigit(static_cast<unsigned char>(line[2])) &&
            std::isxdigit(static_cast<unsigned char>(line[3])) && line.compare(4, 2, "  ") == 0) {
            std::string key = line.substr(0, 4);
            for (char& c : key) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            list.vendors.emplace_back(key, line.substr(6));
        }
    }
    return list;
}

}  // namespace

TEST(PciVendorNames, ListAndMapHoldTheSameAscendingLowerCaseKeysOnce) {
    ASSERT_GT(pciVendorNameCount, 1000u);
    ASSERT_EQ(pciVendorNames.size(), pciVendorNameCount) << "a key occurs twice in the list";
    for (std::size_t i = 0; i < pciVendorNameCount; ++i) {
        const zuvPciVendorName& entry = pciVendorNameList[i];
        ASSERT_NE(entry.key, nullptr);
        ASSERT_NE(entry.name, nullptr);
        EXPECT_TRUE(isTableKey(entry.key)) << entry.key;
        EXPECT_GT(std::strlen(entry.name), 0u) << entry.key;
        if (i > 0) {
            EXPECT_LT(std::strcmp(pciVendorNameList[i - 1].key, entry.key), 0) << entry.key;
        }
        auto found = pciVendorNames.find(entry.key);
        ASSERT_NE(found, pciVendorNames.end()) << entry.key;
        EXPECT_EQ(found->second, entry.name);
    }
}

TEST(PciVendorNames, LookUpsByTheFormOfTheTable) {
    struct Case {
        const char* key;
        const char* name;  // nullptr: no entry
    };
    const Case cases[] = {
        {"8086", "Intel Corporation"},
        {"1000", "Broadcom / LSI"},
        {"9005", "Adaptec"},
        {"0010", "Allied Telesis, Inc (Wrong ID)"},  // the list's marks stay
        {"0001", "SafeNet (wrong ID)"},
        {"fffe", "VMWare Inc (temporary ID)"},
        {"0x1000", nullptr},  // readers must strip "0x"
        {"ABCD", nullptr},    // and lower the case
        {"8086 ", nullptr},
        {"", nullptr},
    };
    for (const Case& c : cases) {
        auto found = pciVendorNames.find(c.key);
        if (c.name == nullptr) {
            EXPECT_EQ(found, pciVendorNames.end()) << c.key;
        } else {
            ASSERT_NE(found, pciVendorNames.end()) << c.key;
            EXPECT_EQ(found->second, c.name) << c.key;
        }
    }
    EXPECT_NE(pciVendorNames.find("abcd"), pciVendorNames.end()) << "ABCD's lower-case form is a vendor";
}

TEST(PciVendorNames, TableIsTheVendorLinesOfTheInstalledList) {
    const PciIdList list = readPciIdList(ZUV_PCI_IDS_PATH);
    if (!list.present) {
        GTEST_SKIP() << ZUV_PCI_IDS_PATH << " is not installed";
    }
    if (list.version != pciVendorNamesListVersion) {
        GTEST_SKIP() << "installed list " << list.version << " differs from the generated " << pciVendorNamesListVersion
                     << "; regenerate with tools/generateVendorNames.py";
    }

    ASSERT_EQ(list.vendors.size(), pciVendorNameCount);
    for (std::size_t i = 0; i < list.vendors.size(); ++i) {
        EXPECT_EQ(list.vendors[i].first, pciVendorNameList[i].key) << "entry " << i;
        EXPECT_EQ(list.vendors[i].second, pciVendorNameList[i].name) << "entry " << i;
    }
}
