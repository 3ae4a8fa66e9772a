#include "platformCodeProbe.h"

#include <atomic>

namespace {

// Constant-initialised, so they hold before any static constructor runs.
std::atomic<int32_t> probeCode{-1};
std::atomic<int> probeCalls{0};

}  // namespace

// The linker routes every call of getCachedPlatformCode() here.
extern "C" int32_t __wrap__Z21getCachedPlatformCodev() {
    probeCalls.fetch_add(1);
    return probeCode.load();
}

namespace zuvtablestest {

void setPlatformCode(int32_t code) { probeCode.store(code); }
int platformQueries() { return probeCalls.load(); }

}  // namespace zuvtablestest
