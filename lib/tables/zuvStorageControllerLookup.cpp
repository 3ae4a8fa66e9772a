#include "tables/zuvStorageControllers.h"

namespace zuvSASRM {

const zuvStorageControllerRecord* findStorageController(uint16_t vendorId, uint16_t deviceId, uint16_t subVendorId,
                                                        uint16_t subDeviceId, const zuvStorageControllerRecord* rows,
                                                        std::size_t rowCount) {
    const zuvStorageControllerRecord* general = nullptr;
    for (std::size_t i = 0; i < rowCount; ++i) {
        const zuvStorageControllerRecord& row = rows[i];
        if (row.vendorId != vendorId || row.deviceId != deviceId || row.name[0] == '\0') continue;
        const bool isProduct = row.subVendorId != 0 || row.subDeviceId != 0;
        if (isProduct) {
            if (row.subVendorId == subVendorId && row.subDeviceId == subDeviceId && row.isApplicable()) return &row;
        } else if (general == nullptr && row.isApplicable()) {
            general = &row;
        }
    }
    return general;
}

}  // namespace zuvSASRM
