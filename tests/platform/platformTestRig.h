#pragma once
// The world of the platform tests: the log, a simulated RMC behind the IPMI device seam
// (installed before the IPMI service is first built, and never destroyed, since the process's
// singletons use it until exit), and SMBIOS images at the host's SMBIOS device path.

#include <unistd.h>

#include <string>

#include "platform/zuvSmbiosReader.h"
#include "vmwareTestLog.h"
#include "zuvSandbox.h"
#include "zuvSimRmc.h"
#include "zuvSimRmcDevice.h"
#include "zuvSmbiosImage.h"

namespace platformtest {

struct Rig {
    zuvsim::SimulatedRmc rmc;
    zuvsim::SimulatedRmcDevice device{rmc};
};

inline Rig& rig() {
    static Rig* made = [] {
        vmwaretest::startLogging();
        auto* rig = new Rig();
        zuvIPMI::setDeviceSystem(&rig->device);
        return rig;
    }();
    return *made;
}

// Puts an image whose system record has this family in place, and makes the reader take it.
inline void installFamily(const std::string& family) {
    rig();
    smbiosClose();
    const auto bytes = zuvsim::SmbiosImage().addBios().addType1(family).bytes();
    zuvtest::writeFile(smbiosDevicePath, std::string(bytes.begin(), bytes.end()));
}

// No SMBIOS data at all.
inline void removeSmbios() {
    rig();
    smbiosClose();
    unlink(smbiosDevicePath);
}

}  // namespace platformtest
