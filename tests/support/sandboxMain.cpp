// A GoogleTest main that moves the whole test binary into the sandbox before any test runs.
#include "zuvSandbox.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    std::string why;
    if (!zuvtest::enterSandbox(&why)) return fprintf(stderr, "cannot enter the test sandbox: %s\n", why.c_str()), 1;
    return RUN_ALL_TESTS();
}
