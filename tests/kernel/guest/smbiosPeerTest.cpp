// The SMBIOS tables that QEMU's firmware built, read by the product through the ESXi device
// path (init placed the entry point and the table there) and by Debian's dmidecode from sysfs.
#include "guestSupport.h"
#include "platform/SMBIOSVMware.h"
#include "platform/zuvSmbiosRecords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>

namespace {

struct Dmidecode {
    std::map<int, unsigned> structures;             // count by type
    std::map<std::string, std::string> systemInfo;  // type 1, by dmidecode's field names
};

Dmidecode dmidecode() {
    Dmidecode peer;
    std::istringstream out(zuvkernel::commandOutput("dmidecode -t 1 -t 9 -t 41"));
    int type = -1;
    for (std::string line; std::getline(out, line);) {
        const size_t at = line.find(", DMI type ");
        if (line.compare(0, 7, "Handle ") == 0 && at != std::string::npos) {
            type = std::atoi(line.c_str() + at + 11);
            ++peer.structures[type];
        } else if (type == 1 && line[0] == '\t' && line.find(": ") != std::string::npos) {
            peer.systemInfo[line.substr(1, line.find(": ") - 1)] = line.substr(line.find(": ") + 2);
        }
    }
    return peer;
}

// dmidecode's text of a string as the product gives it: "Undefined" for a string that isn't
// there, and cut to the product's fixed field.
std::string asProductText(const std::string& peerText, size_t width) {
    return peerText == "Not Specified" ? "Undefined" : peerText.substr(0, width - 1);
}

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

}  // namespace

TEST(Smbios, ReaderAgreesWithDmidecode) {
    for (const char* name : {"zuvfwuuid", "zuvuuid", "zuvplatform"}) ASSERT_NE("", zuvkernel::bootValue(name)) << name;
    const Dmidecode peer = dmidecode();
    SMBIOSVMware smbios;
    for (int type : {1, 9, 41}) {
        void* table = nullptr;
        unsigned count = 0;
        EXPECT_EQ(peer.structures.count(type) ? 0 : -1, smbios.getSmbiosTable(type, &table, &count)) << type;
        EXPECT_EQ(peer.structures.count(type) ? peer.structures.at(type) : 0, count) << "structures of type " << type;
        free(table);
    }

    void* table = nullptr;
    unsigned count = 0;
    ASSERT_EQ(0, smbios.getSmbiosTable(1, &table, &count));
    const auto& info = *static_cast<smbiosSystemInfo*>(table);
    const struct {
        const char* peerName;
        std::string product;
        size_t width;
    } fields[] = {
        {"Manufacturer", smbios.getManufacturer(), sizeof info.manufacturer},
        {"Product Name", info.productName, sizeof info.productName},
        {"Version", info.version, sizeof info.version},
        {"Serial Number", info.serialNumber, sizeof info.serialNumber},
        {"SKU Number", info.skuNumber, sizeof info.skuNumber},
        {"Family", smbios.getFamily(), sizeof info.family},
    };
    for (const auto& f : fields) {
        EXPECT_EQ(asProductText(peer.systemInfo.at(f.peerName), f.width), f.product) << f.peerName;
    }
    // The UUID as the firmware stored it, and as the product prints it after its byte-order rule.
    EXPECT_EQ(zuvkernel::bootValue("zuvfwuuid"), lowerCase(peer.systemInfo.at("UUID")));
    EXPECT_EQ(zuvkernel::bootValue("zuvuuid"), std::string(info.uuid));
    EXPECT_EQ(std::atoi(zuvkernel::bootValue("zuvplatform").c_str()), smbios.getPlatform());
    free(table);
}
