#pragma once
// The phase marker of the external-BMC run, sent by the guest tests.

#include <string>

namespace zuvkernel {

// Tells the host which phase follows and returns once it has answered. While the host's BMC
// is away (after a dropped connection) QEMU answers for it with a non-zero code: the marker
// is sent again, for up to ten seconds.
void announce(const std::string& phase);

}  // namespace zuvkernel
