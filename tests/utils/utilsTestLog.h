#pragma once
// The log of the utilities tests, read back through the shared test log.

#include "zuvTestLog.h"

namespace utilstest {

using zuvtest::clearLogs;
using zuvtest::countMessage;
using zuvtest::hasMessage;
inline void startLogging() { zuvtest::startFileLogging(); }
// What follows "<tag>: " on the lines of the main (error, warning) or the debug file.
inline std::vector<std::string> mainMessages(const std::string& tag = "ZUV_UTILS") {
    return zuvtest::logMessages(zuvtest::kMainLog, tag);
}
inline std::vector<std::string> debugMessages(const std::string& tag = "ZUV_UTILS") {
    return zuvtest::logMessages(zuvtest::kDebugLog, tag);
}
// The main-file messages written at one level: "ERROR", "WARNING" or "INFO".
inline std::vector<std::string> mainMessagesAt(const std::string& level, const std::string& tag = "ZUV_UTILS") {
    return zuvtest::logMessages(zuvtest::kMainLog, tag, level);
}

}  // namespace utilstest
