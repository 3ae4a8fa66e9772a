#include "fuzzHarness.h"

#include <cstdio>
#include <fstream>
#include <iterator>

#include "zuvSandbox.h"

extern "C" __attribute__((weak)) void zuvFuzzHarnessSetUp() {}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    zuvtest::enterSandbox();
    zuvtest::writeConfig(R"({"EnableDebugLog": true, "LoggingLevel": "info", "ZUVLogLocation": "/dev/null",
        "DebugLogLocation": "/dev/null", "CliMode": "full", "EnableResources": ["All"]})");
    zuvtest::makeDirectories("/opt/kelzuv/tmp");
    zuvFuzzHarnessSetUp();
    return 0;
}

#ifndef ZUV_FUZZ
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// Runs the harness once over each file given (its seeds and the inputs of earlier findings). A
// crash, a sanitizer report or an escaping exception fails the run.
int main(int argc, char** argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    for (int i = 1; i < argc; ++i) {
        std::fprintf(stderr, "%s\n", argv[i]);  // names the input of a failure
        std::ifstream in(argv[i], std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    }
    return argc > 1 ? 0 : 1;
}
#endif
