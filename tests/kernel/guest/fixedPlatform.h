#pragma once
// The guest has no SMBIOS of a known platform: the manager is given one fixed platform, so
// that only the IPMI path under it is the real one.

#include "platform/zuvSmbiosInterface.h"

#include <string>

namespace zuvkernel {

class FixedPlatform : public zuvSmbiosInterface {
public:
    std::string getFamily() override { return "PLATFAMILY00002"; }
    std::string getManufacturer() override { return "ZUV"; }
    int32_t getPlatform() override { return 1; }
    int getSmbiosTable(int, void** table, unsigned* count) override {
        *table = nullptr;
        *count = 0;
        return -1;
    }
};

}  // namespace zuvkernel
