// Text forms of the present time, the time stamp parser, and boot and shutdown times from the
// host's summary log.

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "log/zuvLogTime.h"
#include "log/zuvLogger.h"
#include "utils/zuvScratchFile.h"
#include "utils/zuvUtils.h"
#include "utils/zuvUtilsLogTag.h"

namespace {
const char* const kMonthNames[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
const char* const kBootScratchPath = "/tmp/zuvboot.log";
constexpr size_t kTimestampMinimumLength = 20;

// Runs the summary-log pipeline into the scratch file and gives its non-empty lines. False
// when the file can't be prepared, the shell fails, or the file can't be read.
bool summaryLogLines(const std::string& pipeline, zuvScratchFile& scratch, std::vector<std::string>& lines) {
    if (!scratch.prepare()) return false;
    const std::string command = pipeline + " >> " + scratch.path();
    if (system(command.c_str()) != 0) return false;
    std::ifstream in(scratch.path());
    if (!in.is_open()) return false;
    for (std::string line; std::getline(in, line);)
        if (!line.empty()) lines.push_back(line);
    return true;
}
}  // namespace

std::string zuvUtils::currentUtcTimestamp() { return ::currentUtcTimestamp(); }

std::string zuvUtils::currentLocalTimestamp() { return ::currentLocalTimestamp(); }

void zuvUtils::timespecDifference(const struct timespec& a, const struct timespec& b, struct timespec& result) {
    ::timespecDifference(a, b, result);
}

std::string zuvUtils::currentShortTimestamp() {
    const time_t now = time(nullptr);
    struct tm local {};
    localtime_r(&now, &local);
    char buffer[64];
    // At most 15 characters: the text always fits.
    (void)snprintf(buffer, sizeof buffer, "%s %d %02d:%02d:%02d", kMonthNames[local.tm_mon], local.tm_mday,
                   local.tm_hour, local.tm_min, local.tm_sec);
    return buffer;
}

time_t zuvUtils::parseTimestamp(const std::string& text) {
    if (text.size() < kTimestampMinimumLength) {
        ZUV_LOG_DEBUG(kUtilsLogTag, "Invalid time stamp format.");
        return 0;
    }
    struct tm fields {};
    fields.tm_year = std::stoi(text.substr(0, 4), nullptr, 10) - 1900;
    fields.tm_mon = std::stoi(text.substr(5, 2), nullptr, 10) - 1;
    fields.tm_mday = std::stoi(text.substr(8, 2), nullptr, 10);
    fields.tm_hour = std::stoi(text.substr(11, 2), nullptr, 10);
    fields.tm_min = std::stoi(text.substr(14, 2), nullptr, 10);
    fields.tm_sec = std::stoi(text.substr(17, 2), nullptr, 10);
    // The daylight flag of the present moment, not of the stamp.
    const time_t now = time(nullptr);
    struct tm local {};
    localtime_r(&now, &local);
    fields.tm_isdst = local.tm_isdst;
    return mktime(&fields);
}

int zuvUtils::getLastShutdownTime(time_t* shutdownTime) {
    zuvScratchFile scratch(kBootScratchPath);
    if (!scratch.prepare()) {
        ZUV_LOG_WARNING(kUtilsLogTag, "Error occurred in gathering system last shutdown time information.");
        return -1;
    }
    const std::string command = std::string(
                                    "grep \"Host is rebooting\" /var/log/vmksummary.log | tail -1 | awk "
                                    "'{print $1}' >> ") +
                                scratch.path();
    if (system(command.c_str()) != 0) {
        ZUV_LOG_WARNING(kUtilsLogTag, "Error occurred in gathering system last shutdown time information.");
        return -1;
    }
    std::ifstream in(scratch.path());
    if (!in.is_open()) {
        ZUV_LOG_WARNING(kUtilsLogTag, "Error occurred in gathering system last shutdown time  information.");
        return -1;
    }
    for (std::string line; std::getline(in, line);)
        if (!line.empty()) *shutdownTime = parseTimestamp(line);
    return 0;
}

int zuvUtils::getBootTimes(time_t* lastBootTime, time_t* previousBootTime) {
    zuvScratchFile scratch(kBootScratchPath);
    std::vector<std::string> lines;
    if (!summaryLogLines("grep \"Host has booted\" /var/log/vmksummary.log | tail -2 | awk '{print $1}'", scratch,
                         lines)) {
        ZUV_LOG_WARNING(kUtilsLogTag, "Error occurred in gathering system boot time information.");
        return -1;
    }
    scratch.remove();
    if (lines.size() >= 2) {
        *previousBootTime = parseTimestamp(lines[0]);
        *lastBootTime = parseTimestamp(lines[1]);
    } else if (lines.size() == 1) {
        *previousBootTime = 0;
        *lastBootTime = parseTimestamp(lines[0]);
    } else {
        *previousBootTime = 0;
    }
    return 0;
}
