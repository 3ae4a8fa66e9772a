#include "vmware/zuvHostSystem.h"

#include <ifaddrs.h>
#include <sys/sysinfo.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <atomic>

namespace {

zuvHostSystem realSystem;
std::atomic<zuvHostSystem*> installed{nullptr};

}  // namespace

int zuvHostSystem::uname(struct utsname* name) { return ::uname(name); }
int zuvHostSystem::sysinfo(struct sysinfo* info) { return ::sysinfo(info); }
int zuvHostSystem::getifaddrs(struct ifaddrs** list) { return ::getifaddrs(list); }
void zuvHostSystem::freeifaddrs(struct ifaddrs* list) { ::freeifaddrs(list); }

void zuvHostSystem::sleepSeconds(unsigned seconds) {
    // sleep() may end early on a signal; the wait is meant to be whole.
    while (seconds > 0) seconds = ::sleep(seconds);
}

zuvHostSystem& zuvCurrentHostSystem() {
    zuvHostSystem* system = installed.load();
    return system ? *system : realSystem;
}

void zuvSetHostSystem(zuvHostSystem* system) { installed.store(system); }
