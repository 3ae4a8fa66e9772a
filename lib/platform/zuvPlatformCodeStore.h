#pragma once
// The process-wide word behind getCachedPlatformCode(). Relaxed atomic and without a lock:
// two threads that find it unknown both ask the platform and store the same code.

#include <atomic>
#include <cstdint>

extern std::atomic<int32_t> zuvCachedPlatformCodeValue;
