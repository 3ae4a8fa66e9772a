#pragma once
// The log of the utilities tests: main and debug lines go to two files inside the sandbox
// (debug output on, level Info), which the tests read back and clear.

#include <string>
#include <vector>

namespace utilstest {

// Writes the configuration and builds the logger, once per process.
void startLogging();
// Empties both files.
void clearLogs();
// What follows "<tag>: " on the lines of the main (error, warning) or the debug file.
std::vector<std::string> mainMessages(const std::string& tag = "ZUV_UTILS");
std::vector<std::string> debugMessages(const std::string& tag = "ZUV_UTILS");
// The main-file messages written at one level: "ERROR", "WARNING" or "INFO".
std::vector<std::string> mainMessagesAt(const std::string& level, const std::string& tag = "ZUV_UTILS");
bool hasMessage(const std::vector<std::string>& messages, const std::string& text);
// Number of messages equal to text.
size_t countMessage(const std::vector<std::string>& messages, const std::string& text);

}  // namespace utilstest
