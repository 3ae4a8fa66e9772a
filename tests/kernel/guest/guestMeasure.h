#pragma once

namespace zuvkernel {

// Get SDR transactions per second and the time of a full repository load, on stdout as
// "ZUVK MEASURE <name> <value> <unit>" lines. Behind the simulated RMC (`announce`), the host
// is first asked for its measuring repository. Returns the process exit status.
int measure(bool announce);

}  // namespace zuvkernel
