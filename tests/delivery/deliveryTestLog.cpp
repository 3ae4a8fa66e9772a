#include "deliveryTestLog.h"

#include <fstream>
#include <sstream>

#include "log/zuvLogger.h"
#include "zuvSandbox.h"

namespace deliverytest {

void startLogging() {
    static bool started = false;
    if (started) return;
    zuvtest::writeConfig(std::string("{\"ZUVLogLocation\":\"") + kMainLog + "\",\"DebugLogLocation\":\"" +
                         kDebugLog + "\",\"EnableDebugLog\":true,\"LoggingLevel\":\"Info\"}");
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
    std::string line;
    const std::string marker = " " + tag + ": ";
    while (std::getline(in, line)) {
        size_t at = line.find(marker);
        if (at != std::string::npos) found.push_back(line.substr(at + marker.size()));
    }
    return found;
}

bool logHolds(const char* file, const std::string& text) {
    std::ifstream in(file);
    std::stringstream all;
    all << in.rdbuf();
    return all.str().find(text) != std::string::npos;
}

}  // namespace deliverytest
