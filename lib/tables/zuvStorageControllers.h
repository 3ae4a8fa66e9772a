#pragma once
// The storage controllers that the service's storage controller resource manager knows,
// each valid on certain server platforms only. Built before main, read-only afterwards.
//
// A reader must honour isApplicable: a row counts only where it returns true, since the
// ids alone don't tell a row (the same four ids can stand under two platforms with other
// option numbers). Rows with subsystem ids 0 name a chip in general and stand behind the
// product rows of their chip, as the fallback. findStorageController is that reader.
// Evaluating isApplicable may build the platform services and may throw what
// getCachedPlatformCode throws.

#include <cstddef>
#include <cstdint>
#include <functional>

namespace zuvSASRM {

// controllerClass values.
constexpr uint8_t chipsetSataRaid = 1;
constexpr uint8_t megaRaid = 2;
constexpr uint8_t smartStorage = 4;
constexpr uint8_t volumeManagementDevice = 8;

struct zuvStorageControllerRecord {
    std::function<bool()> isApplicable;
    uint16_t vendorId;
    uint16_t deviceId;
    uint16_t subVendorId;         // 0 where the row names no subsystem
    uint16_t subDeviceId;         // 0 where the row names no subsystem
    const char* sparePartNumber;  // never null; empty for a chip in general
    const char* optionNumber;     // never null; empty for a chip in general
    uint8_t controllerClass;
    const char* name;
};

// The platform tests of the rows, in the order in which they are built.
extern const std::function<bool()> onPlatform0Or1Or2;
extern const std::function<bool()> onPlatform0Or1;
extern const std::function<bool()> onPlatform2;
extern const std::function<bool()> onPlatform4;
extern const std::function<bool()> onPlatform2Or4;
extern const std::function<bool()> onPlatform0Or1Or2Or4;

constexpr std::size_t storageControllerCount = 24;
extern const zuvStorageControllerRecord storageControllers[storageControllerCount];

// The row that names the controller with these ids on this platform, or nullptr: a product
// row with all four ids first, wherever it stands; else the first row in general of the chip
// (subsystem ids 0). Only rows whose isApplicable holds count, and a row without a name (a
// product whose data this tree lacks) is never found. isApplicable is evaluated only on rows
// whose ids fit. Another array of rows can be given in place of the table.
const zuvStorageControllerRecord* findStorageController(uint16_t vendorId, uint16_t deviceId, uint16_t subVendorId,
                                                        uint16_t subDeviceId,
                                                        const zuvStorageControllerRecord* rows = storageControllers,
                                                        std::size_t rowCount = storageControllerCount);

}  // namespace zuvSASRM
