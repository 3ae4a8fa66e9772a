#include "zuvInProcessRmc.h"

#include "ipmi/zuvIPMIDeviceSystem.h"
#include "zuvSimRmcReport.h"

#include <unistd.h>

#include <climits>
#include <stdexcept>

namespace zuvsim {

void InProcessRmc::Device::sleepMicroseconds(uint64_t microseconds) {
    SimulatedRmcDevice::sleepMicroseconds(microseconds);
    if (realPause) usleep(static_cast<useconds_t>(microseconds));
}

InProcessRmc::InProcessRmc(const std::string& behave, bool realPause) : device(rmc, realPause) {
    if (behave == "lost")
        device.failNext(SimulatedRmcDevice::Step::Receive, INT_MAX);
    else if (behave != "normal")
        throw std::invalid_argument("unknown RMC behaviour " + behave);
    zuvIPMI::setDeviceSystem(&device);
}

InProcessRmc::~InProcessRmc() { zuvIPMI::setDeviceSystem(nullptr); }

void InProcessRmc::reportCommands(std::FILE* out) { reported = zuvsim::reportCommands(rmc, reported, out); }

}  // namespace zuvsim
