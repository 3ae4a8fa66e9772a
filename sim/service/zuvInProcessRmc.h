#pragma once
// The simulated RMC behind the IPMI device seam, in the service's own process: the library's
// IPMI service opens /dev/ipmi0 and exchanges its requests and responses with it as it would
// with the kernel's driver. Nothing of the machine's is touched.

#include "zuvSimRmc.h"
#include "zuvSimRmcDevice.h"

#include <cstdio>
#include <string>

namespace zuvsim {

class InProcessRmc {
public:
    // behave: "normal", or "lost": no answer reaches the host (every receive of the device
    // fails, so every transfer fails).
    // realPause: the pauses the IPMI service asks of the device are really taken (the 500 ms
    // behind every command); otherwise they are only recorded. Throws std::invalid_argument
    // for an unknown behave text. Installs itself as the process's device seam.
    InProcessRmc(const std::string& behave, bool realPause);
    ~InProcessRmc();
    InProcessRmc(const InProcessRmc&) = delete;
    InProcessRmc& operator=(const InProcessRmc&) = delete;

    // Writes what the RMC put together since the last call: for each command its name, its
    // block count and its argument, an argument that is JSON pretty-printed.
    void reportCommands(std::FILE* out);

private:
    class Device : public SimulatedRmcDevice {
    public:
        Device(SimulatedRmc& rmc, bool realPause) : SimulatedRmcDevice(rmc), realPause(realPause) {}
        void sleepMicroseconds(uint64_t microseconds) override;

    private:
        const bool realPause;
    };

    SimulatedRmc rmc;
    Device device;
    size_t reported = 0;
};

}  // namespace zuvsim
