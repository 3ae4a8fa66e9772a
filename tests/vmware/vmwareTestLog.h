#pragma once
// The log of the VMware and platform tests, read back through the shared test log.

#include "zuvTestLog.h"

namespace vmwaretest {

using zuvtest::clearLogs;
using zuvtest::hasMessage;
using zuvtest::kDebugLog;
inline void startLogging() { zuvtest::startFileLogging(); }
inline std::vector<std::string> messages(const char* file, const std::string& tag) {
    return zuvtest::logMessages(file, tag);
}

}  // namespace vmwaretest
