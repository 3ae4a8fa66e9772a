#pragma once
// A complete syslog write of its own: openlog("zuv", 0, LOG_USER), syslog, closelog.
// Used by the parts that sit below the log facility (configuration, SMBIOS, the logger itself).

#include <syslog.h>

void zuvSyslog(int priority, const char* format, ...) __attribute__((format(printf, 2, 3)));
