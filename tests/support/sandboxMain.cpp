// A GoogleTest main that moves the whole test binary into the sandbox before any test runs.
#include "zuvSandbox.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    zuvtest::enterSandbox();
    return RUN_ALL_TESTS();
}
