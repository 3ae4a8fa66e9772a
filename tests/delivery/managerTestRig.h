#pragma once
// The world of the manager tests: a simulated RMC behind the IPMI device seam, installed
// before the IPMI service is first built, and an SMBIOS image at the host's device path.
// Both outlive every manager, the process's singleton included.

#include <functional>
#include <string>
#include <utility>

#include "delivery/zuvEvent.h"
#include "deliveryTestLog.h"
#include "queueTestTools.h"
#include "zuvSimRmc.h"
#include "zuvSimRmcDevice.h"

namespace deliverytest {

// A named command as the simulated RMC put it together from its blocks.
using ReceivedCommand = decltype(std::declval<const zuvsim::SimulatedRmc&>().commands())::value_type;

struct ManagerRig {
    zuvsim::SimulatedRmc rmc;
    zuvsim::SimulatedRmcDevice device{rmc};
};

// Builds the rig and the logger once per process, and puts an SMBIOS image of the given
// family in place (an empty family: no image at all).
ManagerRig& managerRig();
void installSmbios(const std::string& family);

// Completion values in the order they arrived, tagged by the caller.
inline std::function<void(int)> recordInto(Recorder& recorder, int tag) {
    return [&recorder, tag](int result) { recorder.record(tag * 10 + result); };
}

zuvEvent sampleEvent(int id, const std::string& source);

}  // namespace deliverytest
