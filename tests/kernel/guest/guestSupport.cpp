#include "guestSupport.h"

#include "ipmi/zuvIPMIService.h"

#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

namespace zuvkernel {

const FirstOpen& firstOpen() {
    static const FirstOpen observed = [] {
        FirstOpen o;
        o.modulesBefore = ipmiModules();
        o.nodeBefore = exists("/dev/ipmi0");
        o.startedAt = time(nullptr);
        const auto start = std::chrono::steady_clock::now();
        zuvIPMIService::getIPMIServiceInstance();
        o.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        o.modulesAfter = ipmiModules();
        return o;
    }();
    return observed;
}

zuvIPMIService& service() {
    firstOpen();
    return *static_cast<zuvIPMIService*>(zuvIPMIService::getIPMIServiceInstance());
}

std::string readText(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<uint8_t> readBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

std::string commandOutput(const std::string& command) {
    std::string out;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[4096];
        for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
        pclose(pipe);
    }
    return out;
}

std::set<std::string> ipmiModules() {
    std::istringstream modules(readText("/proc/modules"));
    std::set<std::string> found;
    for (std::string name, rest; modules >> name && std::getline(modules, rest);) {
        if (name.compare(0, 5, "ipmi_") == 0) found.insert(name);
    }
    return found;
}

bool exists(const char* path) {
    struct stat st {};
    return stat(path, &st) == 0;
}

std::string bootValue(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

}  // namespace zuvkernel
