#pragma once
// The one log of a process: a main channel (error, warning, info) and a debug channel,
// each to syslog, the terminal or a file as the configuration says.

#include <pthread.h>

#include <cstdint>
#include <cstdio>
#include <map>
#include <ostream>
#include <string>

class zuvLogger {
public:
    // Builds the logger at first use. Not guarded against two threads: a process
    // must cause the first construction before it starts threads.
    static zuvLogger* getInstance();
    static void createInstance();

    void error(const std::string& message, const std::string& tag, int32_t line);
    void warning(const std::string& message, const std::string& tag, int32_t line);
    void info(const std::string& message, const std::string& tag, int32_t line);
    void debug(const std::string& message, const std::string& tag, int32_t line);
    void infoAlways(const std::string& message, const std::string& tag, int32_t line);

    int32_t getLogLevel() const { return logLevel; }
    void setLogLevel(int32_t level) { logLevel = level; }
    int32_t getDebugLevel() const { return debugLevel; }
    void setLogKindFile() { logKind = kFile; }

    // Destination kinds, by the text of a location key.
    static constexpr int32_t kFile = 2;
    static constexpr int32_t kSyslog = 3;
    static constexpr int32_t kTerminal = 4;

    static int32_t kindOfLocation(const std::string& location);
    static int32_t levelOfText(const std::string& loggingLevel);
    // "%03d" up to 99, "%d" above, cut to four digits.
    static std::string renderLineNumber(int32_t line);
    // mkdir 0700 of every directory of a file path; 0, or -1 with errno set.
    static int createDirectories(const std::string& path);
    // Publishes target as a symbolic link in directory; true on success.
    static bool publishLink(const std::string& target, const std::string& directory);

private:
    zuvLogger();
    ~zuvLogger() = delete;

    void write(const char* levelText, const std::string& message, const std::string& tag, int32_t line);
    int32_t threadNumber();

    std::ostream* logStream = nullptr;
    std::ostream* debugStream = nullptr;
    std::string debugLogPath;
    std::string logPath;
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;  // default attributes
    int32_t logLevel = 3;
    int32_t debugLevel = 12;
    int32_t logKind = kSyslog;
    int32_t debugKind = kSyslog;
    std::map<uint64_t, int32_t> threadNumbers;
    int32_t nextThreadNumber = 100;
    int32_t firstThreadNumber = 100;

    static zuvLogger* instance;
};

// Formats only when the line will be written; a message is cut at 4095 characters.
#define ZUV_LOG_AT_(guard, member, tag, ...)                                      \
    do {                                                                          \
        zuvLogger* zuvLog_ = zuvLogger::getInstance();                            \
        if (guard) {                                                              \
            char zuvLogBuf_[4096];                                                \
            /* a longer message is cut at 4095 characters on purpose */           \
            (void)snprintf(zuvLogBuf_, sizeof zuvLogBuf_, __VA_ARGS__);           \
            zuvLog_->member(std::string(zuvLogBuf_), std::string(tag), __LINE__); \
        }                                                                         \
    } while (0)

#define ZUV_LOG_ERROR(tag, ...) ZUV_LOG_AT_(zuvLog_->getLogLevel() < 5, error, tag, __VA_ARGS__)
#define ZUV_LOG_WARNING(tag, ...) ZUV_LOG_AT_(zuvLog_->getLogLevel() < 4, warning, tag, __VA_ARGS__)
#define ZUV_LOG_INFO(tag, ...) ZUV_LOG_AT_(zuvLog_->getLogLevel() < 3, info, tag, __VA_ARGS__)
#define ZUV_LOG_DEBUG(tag, ...) \
    ZUV_LOG_AT_(zuvLog_->getDebugLevel() == 1 || zuvLog_->getLogLevel() <= 1, debug, tag, __VA_ARGS__)
