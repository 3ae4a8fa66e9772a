#include "config/zuvSyslog.h"

#include <cstdarg>

void zuvSyslog(int priority, const char* format, ...) {
    va_list args;
    va_start(args, format);
    openlog("zuv", 0, LOG_USER);
    vsyslog(priority, format, args);
    closelog();
    va_end(args);
}
