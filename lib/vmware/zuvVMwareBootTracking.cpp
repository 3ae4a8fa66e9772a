// Boot and shutdown tracking: the start-stop state file, its rewrites at service start and
// stop, and the decision whether the OS booted since the last run, and how it went down.
//
// The file holds "key value" lines for current_start, last_start and last_stop (seconds
// since the epoch, 0 for none). Every rewrite replaces the file as a whole through its
// temporary twin, so an interrupted or failed rewrite leaves the previous file intact.
#include <fcntl.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <stdexcept>

#include "log/zuvLogger.h"
#include "vmware/zuvHostSystem.h"
#include "vmware/zuvStateFileWriter.h"
#include "vmware/zuvHostCalls.h"
#include "vmware/zuvVMwareLogTag.h"
#include "vmware/zuvVMwareOSUtils.h"

namespace {

constexpr const char* kStateFile = "/opt/kelzuv/vital/kelZUVStartStop.txt";
constexpr const char* kStateTemporaryFile = "/opt/kelzuv/vital/kelZUVStartStoptmp.txt";
constexpr unsigned kBootDecisionDelaySeconds = 20;

// 0 when the state file opens for reading, else the errno of the failure.
int stateFileOpenError() {
    const int fd = open(kStateFile, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return errno;
    close(fd);
    return 0;
}

std::string keyLine(const char* key, int64_t value) { return std::string(key) + " " + std::to_string(value); }

// Replaces the state file; a failed rewrite keeps the old file and is logged.
bool replaceStateFile(const std::string& content) {
    if (zuvReplaceFileContent(kStateFile, kStateTemporaryFile, content)) return true;
    const int error = errno;
    ZUV_LOG_ERROR(kVMwareLogTag, "Could not rewrite %s, its previous content is kept: %s", kStateFile, strerror(error));
    return false;
}

// Rewrites the state file with every line holding key (anywhere) replaced by "key value".
void replaceKeyLines(const char* key, int64_t value) {
    std::string content;
    const auto edit = [&](const std::string& line) {
        return line.find(key) != std::string::npos ? keyLine(key, value) : line;
    };
    if (!zuvEditFileLines(kStateFile, edit, &content)) {
        ZUV_LOG_ERROR(kVMwareLogTag, "Could not read %s for its rewrite", kStateFile);
        return;
    }
    replaceStateFile(content);
}

}  // namespace

int64_t zuvVMwareOSUtils::getServiceStartTime() {
    static const int64_t startTime = static_cast<int64_t>(time(nullptr));
    return startTime;
}

int64_t zuvVMwareOSUtils::getSystemBootTime() {
    struct sysinfo info {};
    const int result = zuvCurrentHostSystem().sysinfo(&info);
    if (result != 0) {
        const int error = errno;
        ZUV_LOG_DEBUG(kVMwareLogTag, "Unable to fetch system Up Time using sysinfo API - %d, %d : %s", result, error,
                      strerror(error));
        return getServiceStartTime() - 1;
    }
    return getServiceStartTime() - static_cast<int64_t>(info.uptime);
}

int64_t zuvVMwareOSUtils::readStartStopValue(const std::string& key) {
    ZUV_LOG_DEBUG(kVMwareLogTag, "content to match =%s", key.c_str());
    std::ifstream in(kStateFile);
    if (!in.is_open()) {
        ZUV_LOG_ERROR(kVMwareLogTag, "Error occurred in opening zuv startup file");
        return 0;
    }
    ZUV_LOG_DEBUG(kVMwareLogTag, "Successful in opening zuv startup file");
    for (std::string token; in >> token;) {
        if (token != key) continue;
        std::string valueToken;
        if (!(in >> valueToken)) return 0;
        const int64_t value = std::strtol(valueToken.c_str(), nullptr, 10);
        ZUV_LOG_DEBUG(kVMwareLogTag, "Found a match %ld", static_cast<long>(value));
        return value;
    }
    return 0;
}

void zuvVMwareOSUtils::updateStartStopFile(int mode) {
    if (mode == 0) {
        // Only a missing file starts afresh; a file that is there but can't be opened (no
        // permission, an I/O error, no descriptor left) keeps its last_start and last_stop.
        const int openError = stateFileOpenError();
        if (openError != 0 && openError != ENOENT) {
            ZUV_LOG_ERROR(kVMwareLogTag, "Could not open %s, its content is kept: %s", kStateFile, strerror(openError));
            throw std::runtime_error("Error opening the zuv startup file");
        }
        if (openError == ENOENT) {
            const std::string content = keyLine("current_start", getServiceStartTime()) + "\n" +
                                        keyLine("last_start", 0) + "\n" + keyLine("last_stop", 0) + "\n";
            if (!zuvReplaceFileContent(kStateFile, kStateTemporaryFile, content))
                throw std::runtime_error("Error opening the zuv startup file");
            ZUV_LOG_DEBUG(kVMwareLogTag, "Successful in creating the file");
        } else {
            replaceKeyLines("current_start", getServiceStartTime());
        }
        if (vmwareDebugOutputOn()) {
            const int64_t currentStart = readStartStopValue("current_start");
            const int64_t lastStop = readStartStopValue("last_stop");
            const int64_t lastStart = readStartStopValue("last_start");
            ZUV_LOG_DEBUG(kVMwareLogTag,
                          "During ZUV service init, last_start : %ld, last_stop : %ld, current_start : %ld",
                          static_cast<long>(lastStart), static_cast<long>(lastStop), static_cast<long>(currentStart));
        }
        return;
    }

    const std::string content = keyLine("last_start", getServiceStartTime()) + "\n" +
                                keyLine("last_stop", static_cast<int64_t>(time(nullptr))) + "\n" +
                                keyLine("current_start", 0) + "\n";
    if (!zuvReplaceFileContent(kStateFile, kStateTemporaryFile, content))
        throw std::runtime_error("Error opening the zuv startup file");
    ZUV_LOG_DEBUG(kVMwareLogTag, "Successful in creating the file");
    if (vmwareDebugOutputOn()) {
        const int64_t currentStart = readStartStopValue("current_start");
        const int64_t lastStop = readStartStopValue("last_stop");
        const int64_t lastStart = readStartStopValue("last_start");
        ZUV_LOG_DEBUG(kVMwareLogTag,
                      "During ZUV service shutdown, last_start : %ld, last_stop : %ld, current_start : %ld",
                      static_cast<long>(lastStart), static_cast<long>(lastStop), static_cast<long>(currentStart));
    }
}

void zuvVMwareOSUtils::genOSBootLogic(bool* gracefulBoot, bool* nonGracefulBoot) {
    // The wait lets the host settle before its boot is judged; the caller expects it.
    zuvCurrentHostSystem().sleepSeconds(kBootDecisionDelaySeconds);
    const int64_t bootTime = getSystemBootTime();
    ZUV_LOG_DEBUG(kVMwareLogTag, "The current system boot time is %ld", static_cast<long>(bootTime));
    const int64_t lastStart = readStartStopValue("last_start");
    const int64_t lastStop = readStartStopValue("last_stop");

    if (lastStart == 0) return;  // no earlier run on record
    if (lastStart < lastStop) {
        if (bootTime > lastStop) {
            *gracefulBoot = true;
            ZUV_LOG_DEBUG(kVMwareLogTag, "In gen OS boot logic.Last shutdown was graceful.");
        } else {
            ZUV_LOG_DEBUG(kVMwareLogTag, "ZUV crashed in current boot so do nothing in point 2");
        }
    } else if (lastStart > lastStop) {
        if (bootTime > lastStart) {
            *nonGracefulBoot = true;
            ZUV_LOG_DEBUG(kVMwareLogTag, "In gen OS boot logic.Last shutdown was not-graceful.");
        } else {
            ZUV_LOG_DEBUG(kVMwareLogTag, "ZUV crashed in current boot so do nothing in point 3");
        }
    }
}

void zuvVMwareOSUtils::updateLastStart() {
    if (stateFileOpenError() != 0) {
        ZUV_LOG_DEBUG(kVMwareLogTag, "Could not update the 'last_start' value in %s", kStateFile);
        return;
    }
    const int64_t currentStart = readStartStopValue("current_start");
    ZUV_LOG_DEBUG(kVMwareLogTag,
                  "After sending OS boots events, we can set current_start to last_start otherwise  it will happen "
                  "during ZUV shutdown. And in case of crash it won't happen.");
    if (currentStart == 0) return;  // the file would keep its content
    replaceKeyLines("last_start", currentStart);
}

void zuvVMwareOSUtils::syncPersistentStorage() {
    zuvHostSyncPersistentStorage(kVMwareLogTag, [this](int error) { return getShortErrorText(error); });
}
