#pragma once
// Log tag of the VMware host layer, and the test of whether debug lines are written.

#include "log/zuvLogger.h"

constexpr const char* kVMwareLogTag = "VMWARE_OS_UTILS";

// True when ZUV_LOG_DEBUG would write: work done only for a debug line is skipped otherwise.
inline bool vmwareDebugOutputOn() {
    zuvLogger* log = zuvLogger::getInstance();
    return log->getDebugLevel() == 1 || log->getLogLevel() <= 1;
}
