#include "log/zuvLogTime.h"

namespace {
std::string formatNow(bool utc, const char* format) {
    const time_t now = time(nullptr);
    struct tm parts {};
    if (utc) {
        gmtime_r(&now, &parts);
    } else {
        localtime_r(&now, &parts);
    }
    char text[64];
    const size_t n = strftime(text, sizeof text, format, &parts);
    return std::string(text, n);
}
}  // namespace

std::string currentUtcTimestamp() { return formatNow(true, "%FT%TZ"); }

std::string currentLocalTimestamp() { return formatNow(false, "%F %T"); }

void timespecDifference(const struct timespec& a, const struct timespec& b, struct timespec& result) {
    result.tv_sec = a.tv_sec - b.tv_sec;
    result.tv_nsec = a.tv_nsec - b.tv_nsec;
    if (result.tv_nsec < 0) {
        result.tv_sec -= 1;
        result.tv_nsec += 1000000000L;
    }
}

std::string currentTimeZoneName() {
    const time_t now = time(nullptr);
    struct tm parts {};
    localtime_r(&now, &parts);
    return parts.tm_zone ? std::string(parts.tm_zone) : std::string();
}
