#include "platform/zuvSmbiosPlatformCode.h"

namespace {

struct FamilyCode {
    const char* family;
    int32_t code;
};

constexpr FamilyCode kFamilyCodes[] = {
    {"PLATFAMILY00001", 0},
    {"PLATFAMILY00002", 1},
    {"PLATFAMILY00003", 2},
    {"PLATFAMILY00004", 4},
};

}  // namespace

int32_t zuvPlatformCodeOfFamily(const std::string& family) {
    for (const FamilyCode& entry : kFamilyCodes) {
        if (family == entry.family) return entry.code;
    }
    return zuvPlatformCodeUnknown;
}
