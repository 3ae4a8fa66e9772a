#pragma once
// The hardware inventory that the service can give from the host's SMBIOS data alone.

#include <json/json.h>

class zuvSmbiosInterface;

namespace zuvsim {

// {"System": {...}, "PlatformCode": n, "Slots": [...], "OnboardDevices": [...]}, from the
// records of types 1, 9 and 41 as the library reads them. Throws what getPlatform throws
// when there is no system record.
Json::Value smbiosInventory(zuvSmbiosInterface& smbios);

}  // namespace zuvsim
