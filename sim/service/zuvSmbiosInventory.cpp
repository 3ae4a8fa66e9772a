#include "zuvSmbiosInventory.h"

#include "platform/zuvSmbiosInterface.h"
#include "platform/zuvSmbiosRecords.h"

#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

namespace zuvsim {
namespace {

// A fixed text field of a record, never read past its width.
template <size_t Width>
std::string text(const char (&field)[Width]) {
    return std::string(field, strnlen(field, Width));
}

// Calls each for every record of the type; no records is an empty list.
template <typename Record>
Json::Value recordsOf(zuvSmbiosInterface& smbios, int type, const std::function<Json::Value(const Record&)>& each) {
    Json::Value list(Json::arrayValue);
    void* table = nullptr;
    unsigned count = 0;
    if (smbios.getSmbiosTable(type, &table, &count) != 0) return list;
    for (unsigned i = 0; i < count; ++i) list.append(each(static_cast<const Record*>(table)[i]));
    std::free(table);
    return list;
}

}  // namespace

Json::Value smbiosInventory(zuvSmbiosInterface& smbios) {
    Json::Value inventory;
    inventory["PlatformCode"] = smbios.getPlatform();
    const Json::Value systems = recordsOf<smbiosSystemInfo>(smbios, 1, [](const smbiosSystemInfo& r) {
        Json::Value system;
        system["Manufacturer"] = text(r.manufacturer);
        system["ProductName"] = text(r.productName);
        system["Version"] = text(r.version);
        system["SerialNumber"] = text(r.serialNumber);
        system["UUID"] = text(r.uuid);
        system["SKU"] = text(r.skuNumber);
        system["Family"] = text(r.family);
        return system;
    });
    inventory["System"] = systems.empty() ? Json::Value() : systems[0];
    inventory["Slots"] = recordsOf<smbiosSystemSlot>(smbios, 9, [](const smbiosSystemSlot& r) {
        Json::Value slot;
        slot["Designation"] = text(r.designation);
        slot["Id"] = r.id;
        slot["Segment"] = r.segmentGroupNum;
        slot["Bus"] = r.busNum;
        slot["DeviceFunction"] = r.devFuncNum;
        return slot;
    });
    inventory["OnboardDevices"] = recordsOf<smbiosOnboardDevice>(smbios, 41, [](const smbiosOnboardDevice& r) {
        Json::Value device;
        device["Designation"] = text(r.referenceDesignation);
        device["Type"] = r.deviceType;
        device["Instance"] = r.deviceTypeInstance;
        device["Segment"] = r.segmentGroupNum;
        device["Bus"] = r.busNum;
        device["Device"] = r.deviceNum;
        device["Function"] = r.functionNum;
        return device;
    });
    return inventory;
}

}  // namespace zuvsim
