#pragma once
// Stands in for getCachedPlatformCode() in the table tests (linked with --wrap): answers a
// code that the test sets, never asks the platform, and counts the calls.

#include <cstdint>

namespace zuvtablestest {

// The code the probe answers; -1 (unknown) until a test sets another.
void setPlatformCode(int32_t code);
// Calls of getCachedPlatformCode() since the process started.
int platformQueries();

}  // namespace zuvtablestest
