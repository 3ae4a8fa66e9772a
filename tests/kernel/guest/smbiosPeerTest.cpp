// The SMBIOS tables that QEMU's firmware built, read by the product through the ESXi device path
// (init placed the entry point and the table there) and by Debian's dmidecode from sysfs.
#include "guestSupport.h"
#include "platform/SMBIOSVMware.h"

#include <gtest/gtest.h>

#include <map>
#include <tuple>

TEST(Smbios, ReaderAgreesWithDmidecode) {
    for (const char* name : {"zuvfwuuid", "zuvuuid", "zuvplatform"}) ASSERT_NE("", zuvkernel::bootValue(name)) << name;
    std::map<int, unsigned> structures;             // dmidecode's count by type
    std::map<std::string, std::string> systemInfo;  // its fields of type 1, by its names
    ASSERT_EQ(0, std::system("dmidecode -t 1 -t 9 -t 41 >/tmp/dmidecode.txt"));
    std::istringstream out(zuvtest::readFile("/tmp/dmidecode.txt"));
    int type = -1;
    for (std::string line; std::getline(out, line);) {
        const size_t typeAt = line.find(", DMI type "), colon = line.find(": ");
        if (line.compare(0, 7, "Handle ") == 0 && typeAt != std::string::npos) {
            ++structures[type = std::atoi(line.c_str() + typeAt + 11)];
        } else if (type == 1 && line[0] == '\t' && colon != std::string::npos) {
            systemInfo[line.substr(1, colon - 1)] = line.substr(colon + 2);
        }
    }

    SMBIOSVMware smbios;
    smbiosSystemInfo* info = nullptr;
    for (int type : {9, 41, 1}) {
        void* table = nullptr;
        unsigned count = 0;
        EXPECT_EQ(structures[type] ? 0 : -1, smbios.getSmbiosTable(type, &table, &count)) << type;
        EXPECT_EQ(structures[type], count) << "structures of type " << type;
        free(info);  // the table of the type before: only that of type 1, the last, stays
        info = static_cast<smbiosSystemInfo*>(table);
    }
    ASSERT_NE(nullptr, info);
    // dmidecode's name of a field, the product's text, the width of the product's field.
    const std::tuple<const char*, std::string, size_t> fields[] = {
        {"Manufacturer", smbios.getManufacturer(), sizeof info->manufacturer},
        {"Product Name", info->productName, sizeof info->productName},
        {"Version", info->version, sizeof info->version},
        {"Serial Number", info->serialNumber, sizeof info->serialNumber},
        {"SKU Number", info->skuNumber, sizeof info->skuNumber},
        {"Family", smbios.getFamily(), sizeof info->family},
    };
    for (const auto& [peerName, product, width] : fields) {
        // A string that isn't there is "Undefined" to the product; a long one is cut to its field.
        const std::string& text = systemInfo[peerName];
        EXPECT_EQ(text == "Not Specified" ? "Undefined" : text.substr(0, width - 1), product) << peerName;
    }
    // The UUID as the firmware stored it, and as the product prints it after its byte-order rule.
    EXPECT_STRCASEEQ(zuvkernel::bootValue("zuvfwuuid").c_str(), systemInfo["UUID"].c_str());
    EXPECT_EQ(zuvkernel::bootValue("zuvuuid"), info->uuid);
    EXPECT_EQ(std::atoi(zuvkernel::bootValue("zuvplatform").c_str()), smbios.getPlatform());
    free(info);
}
