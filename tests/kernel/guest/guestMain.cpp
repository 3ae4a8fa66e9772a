// The guest's test program: GoogleTest cases, or with --measure the speed figures of the
// emulated KCS path (printed for the host to report; nothing is asserted about them).
#include "guestMeasure.h"

#include <gtest/gtest.h>

#include <cstring>

int main(int argc, char** argv) {
    if (argc > 1 && std::strcmp(argv[1], "--measure") == 0) {
        return zuvkernel::measure(argc > 2 && std::strcmp(argv[2], "extern") == 0);
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
