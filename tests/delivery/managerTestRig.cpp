#include "managerTestRig.h"

#include "ipmi/zuvIPMIDeviceSystem.h"
#include "platform/zuvSmbiosReader.h"
#include "zuvSandbox.h"
#include "zuvSmbiosImage.h"

#include <unistd.h>

namespace deliverytest {

ManagerRig& managerRig() {
    static ManagerRig* rig = [] {
        startLogging();
        auto* made = new ManagerRig();  // never destroyed: the singletons use it at exit
        zuvIPMI::setDeviceSystem(&made->device);
        return made;
    }();
    return *rig;
}

void installSmbios(const std::string& family) {
    smbiosClose();
    if (family.empty()) {
        ::unlink(smbiosDevicePath);
        return;
    }
    std::vector<uint8_t> image = zuvsim::SmbiosImage().addBios().addType1(family).bytes();
    zuvtest::writeFile(smbiosDevicePath, std::string(image.begin(), image.end()));
}

zuvEvent sampleEvent(int id, const std::string& source) {
    zuvEvent event;
    event.id = id;
    event.eventTime = "2026-11-18T10:36:45Z";
    event.physicalLocation = "Slot 3 Port 1";
    event.source = source;
    return event;
}

}  // namespace deliverytest
