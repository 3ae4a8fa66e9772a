#pragma once
// The log of the VMware and platform tests: main and debug lines go to two files inside the
// sandbox (debug output on, level Info), which tests read back and clear.

#include <string>
#include <vector>

namespace vmwaretest {

constexpr const char* kMainLog = "/opt/kelzuv/log/zuv.log";
constexpr const char* kDebugLog = "/opt/kelzuv/log/zuvdebug.log";

// Writes the configuration and builds the logger, once per process.
void startLogging();
// Empties both files.
void clearLogs();
// The messages of the lines of a file with the tag: what follows "TAG: ".
std::vector<std::string> messages(const char* file, const std::string& tag);
// The messages of the VMware host layer, main or debug file.
std::vector<std::string> mainMessages();
std::vector<std::string> debugMessages();
// True when some message equals text.
bool hasMessage(const std::vector<std::string>& messages, const std::string& text);

}  // namespace vmwaretest
