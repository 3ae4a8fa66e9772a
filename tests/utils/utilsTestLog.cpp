#include "utilsTestLog.h"

#include <algorithm>
#include <fstream>

#include "log/zuvLogger.h"
#include "zuvSandbox.h"

namespace utilstest {
namespace {
const char* const kMainLog = "/opt/kelzuv/log/zuv.log";
const char* const kDebugLog = "/opt/kelzuv/log/zuvdebug.log";

std::vector<std::string> messages(const char* file, const std::string& tag, const std::string& level = "") {
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
}  // namespace

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

std::vector<std::string> mainMessages(const std::string& tag) { return messages(kMainLog, tag); }
std::vector<std::string> mainMessagesAt(const std::string& level, const std::string& tag) {
    return messages(kMainLog, tag, level);
}
std::vector<std::string> debugMessages(const std::string& tag) { return messages(kDebugLog, tag); }

bool hasMessage(const std::vector<std::string>& messages, const std::string& text) {
    return countMessage(messages, text) != 0;
}

size_t countMessage(const std::vector<std::string>& messages, const std::string& text) {
    return static_cast<size_t>(std::count(messages.begin(), messages.end(), text));
}

}  // namespace utilstest
