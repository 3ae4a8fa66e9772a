#pragma once
// Small helpers of the guest tests: the kernel's view of the IPMI driver.

#include <sys/stat.h>

#include <fstream>
#include <sstream>
#include <string>

namespace zuvkernel {

inline std::string readText(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

inline bool moduleLoaded(const std::string& name) {
    std::istringstream modules(readText("/proc/modules"));
    std::string line;
    while (std::getline(modules, line)) {
        if (line.compare(0, name.size() + 1, name + " ") == 0) return true;
    }
    return false;
}

inline bool isCharacterDevice(const char* path) {
    struct stat st {};
    return stat(path, &st) == 0 && S_ISCHR(st.st_mode);
}

}  // namespace zuvkernel
