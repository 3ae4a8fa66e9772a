#include "fuzzHarness.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "zuvSandbox.h"

extern "C" __attribute__((weak)) void zuvFuzzHarnessSetUp() {}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    std::string why;
    if (!zuvtest::enterSandbox(&why)) {
        std::fprintf(stderr, "cannot enter the test sandbox: %s\n", why.c_str());
        std::abort();
    }
    zuvtest::writeConfig(R"({"EnableDebugLog": true, "LoggingLevel": "info", "ZUVLogLocation": "/dev/null",
        "DebugLogLocation": "/dev/null", "CliMode": "full", "EnableResources": ["All"]})");
    zuvtest::makeDirectories("/opt/kelzuv/tmp");
    zuvFuzzHarnessSetUp();
    return 0;
}

#ifndef ZUV_FUZZ
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// Runs the harness once over every file of the directories given (its seeds and the inputs of
// earlier findings). A crash, a sanitizer report or an escaping exception fails the run.
int main(int argc, char** argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    size_t replayed = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            if (!entry.is_regular_file()) continue;
            std::fprintf(stderr, "%s\n", entry.path().c_str());  // names the input of a failure
            std::ifstream in(entry.path(), std::ios::binary);
            const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
            ++replayed;
        }
    }
    std::printf("%zu inputs replayed\n", replayed);
    return replayed == 0 ? 1 : 0;
}
#endif
