#include <atomic>

#include "platform/zuvPlatformCode.h"
#include "platform/zuvPlatformServices.h"
#include "platform/zuvSmbiosPlatformCode.h"

namespace {

// The process-wide word. Relaxed and without a lock: two threads that find it unknown both
// ask the platform and store the same code.
std::atomic<int32_t> cachedCode{zuvPlatformCodeUnknown};

}  // namespace

int32_t getCachedPlatformCode() {
    int32_t code = cachedCode.load(std::memory_order_relaxed);
    if (code != zuvPlatformCodeUnknown) return code;
    // Asked again while unknown: the family may become readable later.
    code = getPlatformServices(1)->getPlatform();
    cachedCode.store(code, std::memory_order_relaxed);
    return code;
}

void storeCachedPlatformCode(int32_t code) { cachedCode.store(code, std::memory_order_relaxed); }

namespace {

// The platform layer is in the process: from now on the predicates ask the cache.
const bool predicatesAskTheCache = (zuvPlatformCodeSourceHook = &getCachedPlatformCode, true);

}  // namespace
