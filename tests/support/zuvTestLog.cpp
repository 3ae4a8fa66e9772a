#include "zuvTestLog.h"

#include "log/zuvLogger.h"
#include "zuvSandbox.h"

#include <algorithm>
#include <fstream>

namespace zuvtest {

void startFileLogging() {
    static bool started = false;
    if (!started)
        writeConfig(std::string("{\"ZUVLogLocation\":\"") + kMainLog + "\",\"DebugLogLocation\":\"" + kDebugLog +
                    "\",\"EnableDebugLog\":true,\"LoggingLevel\":\"Info\"}");
    started = zuvLogger::getInstance() != nullptr;
}

void clearLogs() {
    for (const char* file : {kMainLog, kDebugLog}) std::ofstream(file, std::ios::trunc);
}

std::vector<std::string> logMessages(const char* file, const std::string& tag, const std::string& level) {
    std::vector<std::string> found;
    std::ifstream in(file);
    const std::string marker = " " + tag + ": ";
    for (std::string line; std::getline(in, line);) {
        const size_t at = line.find(marker);
        if (at != std::string::npos && line.substr(0, at).find("[" + level) != std::string::npos)
            found.push_back(line.substr(at + marker.size()));
    }
    return found;
}

bool logHolds(const char* file, const std::string& text) {
    return fileExists(file) && readFile(file).find(text) != std::string::npos;
}

size_t countMessage(const std::vector<std::string>& messages, const std::string& text) {
    return static_cast<size_t>(std::count(messages.begin(), messages.end(), text));
}

}  // namespace zuvtest
