#include "zuvTestLog.h"

#include "log/zuvLogger.h"
#include "zuvSandbox.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace zuvtest {

void startFileLogging() {
    static bool started = false;
    if (started) return;
    writeConfig(std::string("{\"ZUVLogLocation\":\"") + kMainLog + "\",\"DebugLogLocation\":\"" + kDebugLog +
                "\",\"EnableDebugLog\":true,\"LoggingLevel\":\"Info\"}");
    zuvLogger::getInstance();
    started = true;
}

void clearLogs() {
    std::ofstream(kMainLog, std::ios::trunc);
    std::ofstream(kDebugLog, std::ios::trunc);
}

std::vector<std::string> logMessages(const char* file, const std::string& tag, const std::string& level) {
    std::vector<std::string> found;
    std::ifstream in(file);
    const std::string marker = " " + tag + ": ";
    const std::string levelMarker = "[" + level + "]";
    for (std::string line; std::getline(in, line);) {
        const size_t at = line.find(marker);
        if (at == std::string::npos) continue;
        if (!level.empty() && line.substr(0, at).find(levelMarker) == std::string::npos) continue;
        found.push_back(line.substr(at + marker.size()));
    }
    return found;
}

bool logHolds(const char* file, const std::string& text) {
    std::ifstream in(file);
    std::stringstream all;
    all << in.rdbuf();
    return all.str().find(text) != std::string::npos;
}

size_t countMessage(const std::vector<std::string>& messages, const std::string& text) {
    return static_cast<size_t>(std::count(messages.begin(), messages.end(), text));
}

bool hasMessage(const std::vector<std::string>& messages, const std::string& text) {
    return countMessage(messages, text) != 0;
}

}  // namespace zuvtest
