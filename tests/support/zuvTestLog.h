#pragma once
// The log of a test process: main and debug lines go to two files inside the sandbox (debug
// output on, level Info), which tests read back and clear.

#include <cstddef>
#include <string>
#include <vector>

namespace zuvtest {

constexpr const char* kMainLog = "/opt/kelzuv/log/zuv.log";
constexpr const char* kDebugLog = "/opt/kelzuv/log/zuvdebug.log";

// Writes the configuration and builds the logger, once per process, before any thread.
void startFileLogging();
// Empties both files.
void clearLogs();
// What follows "<tag>: " on the lines of a file; with a level ("ERROR", "WARNING", "INFO",
// "DEBUG"), only the lines written at that level.
std::vector<std::string> logMessages(const char* file, const std::string& tag, const std::string& level = "");
// True once some line of the file holds text.
bool logHolds(const char* file, const std::string& text);
size_t countMessage(const std::vector<std::string>& messages, const std::string& text);
bool hasMessage(const std::vector<std::string>& messages, const std::string& text);

}  // namespace zuvtest
