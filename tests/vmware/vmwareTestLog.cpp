#include "vmwareTestLog.h"

#include <algorithm>
#include <fstream>

#include "log/zuvLogger.h"
#include "zuvSandbox.h"

namespace vmwaretest {

void startLogging() {
    static bool started = false;
    if (started) return;
    zuvtest::writeConfig(std::string("{\"ZUVLogLocation\":\"") + kMainLog + "\",\"DebugLogLocation\":\"" + kDebugLog +
                         "\",\"EnableDebugLog\":true,\"LoggingLevel\":\"Info\"}");
    zuvLogger::getInstance();
    started = true;
}

void clearLogs() {
    std::ofstream(kMainLog, std::ios::trunc);
    std::ofstream(kDebugLog, std::ios::trunc);
}

std::vector<std::string> messages(const char* file, const std::string& tag) {
    std::vector<std::string> found;
    std::ifstream in(file);
    const std::string marker = " " + tag + ": ";
    for (std::string line; std::getline(in, line);) {
        const size_t at = line.find(marker);
        if (at != std::string::npos) found.push_back(line.substr(at + marker.size()));
    }
    return found;
}

std::vector<std::string> mainMessages() { return messages(kMainLog, "VMWARE_OS_UTILS"); }
std::vector<std::string> debugMessages() { return messages(kDebugLog, "VMWARE_OS_UTILS"); }

bool hasMessage(const std::vector<std::string>& messages, const std::string& text) {
    return std::find(messages.begin(), messages.end(), text) != messages.end();
}

}  // namespace vmwaretest
