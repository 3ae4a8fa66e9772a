#pragma once

namespace zuvkernel {

// Get SDR transactions per second and the time of a full repository load, on stdout as
// "ZUVK MEASURE <name> <value> <unit>" lines. Returns the process exit status.
int measure();

}  // namespace zuvkernel
