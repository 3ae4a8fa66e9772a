#pragma once
// What the guest tests share: the service, built on first use by whichever test needs it first,
// with the kernel's state observed around that first construction; and small readers of the
// guest's files and of the peers' output.

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <set>
#include <string>
#include <vector>

class zuvIPMIService;

namespace zuvkernel {

struct FirstOpen {
    std::set<std::string> modulesBefore, modulesAfter;  // loaded ipmi_* modules
    bool nodeBefore = false;                            // /dev/ipmi0 existed
    double seconds = 0;                                 // the first construction took
    time_t startedAt = 0;
};

// Builds the service the first time and tells what it found and did.
const FirstOpen& firstOpen();
zuvIPMIService& service();

std::string readText(const std::string& path);
std::vector<uint8_t> readBytes(const std::string& path);
std::string commandOutput(const std::string& command);
std::set<std::string> ipmiModules();
bool exists(const char* path);
// A value of the kernel command line, which init passes on in the environment; "" if absent.
std::string bootValue(const char* name);

}  // namespace zuvkernel
