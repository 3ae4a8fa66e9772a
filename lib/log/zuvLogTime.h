#pragma once
// Time helpers of the log facility.

#include <ctime>
#include <string>

// Current time in UTC, "%FT%TZ".
std::string currentUtcTimestamp();
// Current local time, "%F %T".
std::string currentLocalTimestamp();
// result = a - b, borrowing a second when the nanoseconds go negative.
void timespecDifference(const struct timespec& a, const struct timespec& b, struct timespec& result);
// The tm_zone text of the local time.
std::string currentTimeZoneName();
