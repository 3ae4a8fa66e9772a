#pragma once
// What the guest tests share: the service, built by whichever test needs it first, with the
// kernel's state observed around that first construction.
#include "ipmi/zuvIPMIService.h"
#include "zuvSandbox.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <set>
#include <sstream>
#include <string>

namespace zuvkernel {

inline std::set<std::string> ipmiModules() {
    std::istringstream modules(zuvtest::readFile("/proc/modules"));
    std::set<std::string> found;
    for (std::string name, rest; modules >> name && std::getline(modules, rest);)
        if (name.compare(0, 5, "ipmi_") == 0) found.insert(name);
    return found;
}

// A value of the kernel command line, which init passes on in the environment; "" if absent.
inline std::string bootValue(const char* name) { return std::getenv(name) ? std::getenv(name) : ""; }

struct FirstOpen {
    std::set<std::string> modulesBefore, modulesAfter;  // loaded ipmi_* modules
    bool nodeBefore = false;                            // /dev/ipmi0 existed
    double seconds = 0;                                 // the first construction took
};

inline const FirstOpen& firstOpen() {
    static const FirstOpen observed = [] {
        FirstOpen o{ipmiModules(), {}, access("/dev/ipmi0", F_OK) == 0, 0};
        const auto start = std::chrono::steady_clock::now();
        zuvIPMIService::getIPMIServiceInstance();
        o.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        o.modulesAfter = ipmiModules();
        return o;
    }();
    return observed;
}

inline zuvIPMIService& service() {
    firstOpen();
    return *static_cast<zuvIPMIService*>(zuvIPMIService::getIPMIServiceInstance());
}

}  // namespace zuvkernel
