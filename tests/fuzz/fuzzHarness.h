#pragma once
// What every fuzz harness shares: LLVMFuzzerInitialize enters the test sandbox, turns every log level
// on with the lines sent to /dev/null (each message formatted, none kept) and calls
// zuvFuzzHarnessSetUp for what a harness needs more. Outside libFuzzer, the main replays the corpus.
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" void zuvFuzzHarnessSetUp();

inline std::string textOf(const uint8_t* data, size_t size) { return {reinterpret_cast<const char*>(data), size}; }

// An input whose first byte steers the harness and whose rest is what it feeds; false when empty.
inline bool splitSteering(const uint8_t* data, size_t size, uint8_t* steer, std::string* rest) {
    if (size == 0) return false;
    *steer = data[0];
    *rest = textOf(data + 1, size - 1);
    return true;
}
