#include "platform/zuvPlatformCode.h"
#include "platform/zuvPlatformCodeStore.h"
#include "platform/zuvPlatformServices.h"
#include "platform/zuvSmbiosPlatformCode.h"

int32_t getCachedPlatformCode() {
    int32_t code = zuvCachedPlatformCodeValue.load(std::memory_order_relaxed);
    if (code != zuvPlatformCodeUnknown) return code;
    // Asked again while unknown: the family may become readable later.
    code = getPlatformServices(1)->getPlatform();
    zuvCachedPlatformCodeValue.store(code, std::memory_order_relaxed);
    return code;
}
