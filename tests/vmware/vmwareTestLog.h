#pragma once
// The log of the VMware and platform tests, read back through the shared test log.

#include "zuvTestLog.h"

namespace vmwaretest {

using zuvtest::clearLogs;
using zuvtest::hasMessage;
using zuvtest::kDebugLog;
using zuvtest::kMainLog;
inline void startLogging() { zuvtest::startFileLogging(); }
inline std::vector<std::string> messages(const char* file, const std::string& tag) {
    return zuvtest::logMessages(file, tag);
}
// The messages of the VMware host layer, main or debug file.
inline std::vector<std::string> mainMessages() { return messages(kMainLog, "VMWARE_OS_UTILS"); }
inline std::vector<std::string> debugMessages() { return messages(kDebugLog, "VMWARE_OS_UTILS"); }

}  // namespace vmwaretest
