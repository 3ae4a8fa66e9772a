#pragma once
// The log facility of the delivery tests: main and debug lines go to two files inside the
// sandbox, which tests read back and clear.

#include <string>
#include <vector>

namespace deliverytest {

constexpr const char* kMainLog = "/opt/kelzuv/log/zuv.log";
constexpr const char* kDebugLog = "/opt/kelzuv/log/zuvdebug.log";

// Writes the configuration and builds the logger, once per process, before any thread.
void startLogging();
// Empties both files.
void clearLogs();
// The messages of the lines of a file whose tag is tag: what follows "TAG: ".
std::vector<std::string> messages(const char* file, const std::string& tag);
// True once a line of the file holds text.
bool logHolds(const char* file, const std::string& text);

}  // namespace deliverytest
