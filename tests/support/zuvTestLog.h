#pragma once
// The log of a test process: main and debug lines (level Info) in two files that tests read back.

#include <string>
#include <vector>

namespace zuvtest {

constexpr const char* kMainLog = "/opt/kelzuv/log/zuv.log";
constexpr const char* kDebugLog = "/opt/kelzuv/log/zuvdebug.log";

void startFileLogging();  // writes the configuration and builds the logger, once, before any thread
void clearLogs();         // empties both files
// What follows "<tag>: " on the lines of a file; with a level ("ERROR", "DEBUG"...), only its lines.
std::vector<std::string> logMessages(const char* file, const std::string& tag, const std::string& level = "");
bool logHolds(const char* file, const std::string& text);
size_t countMessage(const std::vector<std::string>& messages, const std::string& text);
inline bool hasMessage(const std::vector<std::string>& messages, const std::string& text) {
    return countMessage(messages, text) != 0;
}

}  // namespace zuvtest
