#pragma once
// The log of the delivery tests, read back through the shared test log.

#include "zuvTestLog.h"

namespace deliverytest {

using zuvtest::clearLogs;
using zuvtest::kDebugLog;
using zuvtest::kMainLog;
using zuvtest::logHolds;
inline void startLogging() { zuvtest::startFileLogging(); }
inline std::vector<std::string> messages(const char* file, const std::string& tag) {
    return zuvtest::logMessages(file, tag);
}

}  // namespace deliverytest
