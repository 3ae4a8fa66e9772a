#include "fuzzSetUp.h"

#include <cstdio>
#include <cstdlib>
#include <string>

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
