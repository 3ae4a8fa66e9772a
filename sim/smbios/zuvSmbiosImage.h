#pragma once
// Builds SMBIOS images as the host's SMBIOS device offers them: a 32-bit "_SM_" entry point
// on a 4-byte boundary, the structure table right behind it (the entry point's table
// address says so, so `dmidecode --from-dump` reads the same image), and an end-of-table
// structure. Structures are added in order; handles count up from 0.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace zuvsim {

using SmbiosUuid = std::array<uint8_t, 16>;

// Type 1, system information. length is the formatted length: 27 in SMBIOS 2.4 and later,
// 25 in 2.1 to 2.3, 8 in 2.0. Empty strings are written as string number 0.
struct SmbiosSystem {
    std::string manufacturer = "Zuv Test Systems";
    std::string productName = "ZT-1000";
    std::string version = "1.0";
    std::string serialNumber = "SN-0001";
    SmbiosUuid uuid{};
    uint8_t wakeUpType = 6;
    std::string skuNumber = "SKU-1";
    std::string family = "PLATFAMILY00001";
    uint8_t length = 27;
};

// Type 9, system slot; length 17 (2.6 and later) or 13 (2.1 to 2.5).
struct SmbiosSlot {
    std::string designation = "PCIe Slot 1";
    uint8_t type = 0xB6;  // PCI Express Gen 3 x16
    uint8_t busDataWidth = 0x0D;
    uint8_t currentUsage = 4;
    uint8_t slotLength = 4;
    uint16_t id = 1;
    uint8_t characteristics1 = 0x04;
    uint8_t characteristics2 = 0x01;
    uint16_t segmentGroupNum = 0;
    uint8_t busNum = 0;
    uint8_t devFuncNum = 0;
    uint8_t length = 17;
};

// Type 41, onboard devices extended information.
struct SmbiosOnboard {
    std::string referenceDesignation = "Onboard LAN 1";
    uint8_t deviceType = 5;  // Ethernet
    bool enabled = true;
    uint8_t deviceTypeInstance = 1;
    uint16_t segmentGroupNum = 0;
    uint8_t busNum = 0;
    uint8_t deviceNum = 0;
    uint8_t functionNum = 0;
};

class SmbiosImage {
public:
    SmbiosImage& addType1(const SmbiosSystem& system);
    SmbiosImage& addType1(const std::string& family, const SmbiosUuid& uuid = {});
    SmbiosImage& addSlot(const SmbiosSlot& slot);
    SmbiosImage& addOnboard(const SmbiosOnboard& device);
    // Type 0, BIOS information, as hosts have it first.
    SmbiosImage& addBios(const std::string& vendor = "Zuv BIOS", const std::string& version = "1.0");
    // Any structure: the formatted bytes behind the 4-byte header, and its string set
    // (strings may hold any byte but NUL).
    SmbiosImage& addStructure(uint8_t type, const std::vector<uint8_t>& formatted,
                              const std::vector<std::string>& strings);
    // Bytes appended to the table as they are, for malformed tables.
    SmbiosImage& addRaw(const std::vector<uint8_t>& bytes);

    // Offset of the entry point in the image; bytes before it are zero.
    SmbiosImage& setEntryOffset(size_t offset);
    // Table length to write into the entry point instead of the real one.
    SmbiosImage& setTableLength(uint16_t length);
    SmbiosImage& withoutEndOfTable();

    // The structure table alone, end-of-table structure included.
    std::vector<uint8_t> table() const;
    // The whole image: zeros, entry point, table.
    std::vector<uint8_t> bytes() const;
    // Writes bytes() to path; throws std::runtime_error when it can't.
    void writeTo(const std::string& path) const;

private:
    std::vector<uint8_t> structures;
    uint16_t nextHandle = 0;
    uint16_t structureCount = 0;
    uint16_t largestStructure = 0;
    size_t entryOffset = 0;
    bool tableLengthSet = false;
    uint16_t tableLengthOverride = 0;
    bool endOfTable = true;
};

}  // namespace zuvsim
