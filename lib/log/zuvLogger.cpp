#include "log/zuvLogger.h"

#include "config/zuvConfig.h"
#include "config/zuvSyslog.h"
#include "log/zuvLogTime.h"

#include <libgen.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <vector>

namespace {
const char* const kInfoText = "[INFO]   ";
const char* const kErrorText = "[ERROR]   ";
const char* const kWarningText = "[WARNING]";
const char* const kDebugText = "[DEBUG]  ";
const char* const kPublishDirectory = "/opt/kelzuv/tmp";
const char* const kBackupLog = "/scratch/log/kelzuv/backup_log";

bool holds(const char* text, const char* word) { return std::strstr(text, word) != nullptr; }
}  // namespace

zuvLogger* zuvLogger::instance = nullptr;

zuvLogger* zuvLogger::getInstance() {
    if (instance == nullptr) instance = new zuvLogger();
    return instance;
}

void zuvLogger::createInstance() { getInstance(); }

int32_t zuvLogger::kindOfLocation(const std::string& location) {
    if (location == "syslog") return kSyslog;
    if (location == "terminal") return kTerminal;
    return kFile;
}

int32_t zuvLogger::levelOfText(const std::string& loggingLevel) {
    std::string lower = loggingLevel;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (lower.find("error") != std::string::npos) return 4;
    if (lower.find("warning") != std::string::npos) return 3;
    if (lower.find("info") != std::string::npos) return 2;
    return 3;
}

std::string zuvLogger::renderLineNumber(int32_t line) {
    char text[5];
    (void)snprintf(text, sizeof text, line <= 99 ? "%03d" : "%d", line);  // cut to four digits on purpose
    return text;
}

int zuvLogger::createDirectories(const std::string& path) {
    std::vector<char> copy(path.begin(), path.end());
    copy.push_back('\0');
    for (size_t i = 1; i < path.size(); ++i) {
        if (copy[i] != '/') continue;
        copy[i] = '\0';
        const int rc = mkdir(copy.data(), 0700);
        copy[i] = '/';
        if (rc != 0 && errno != EEXIST) return -1;
    }
    return 0;
}

bool zuvLogger::publishLink(const std::string& target, const std::string& directory) {
    if (access(target.c_str(), R_OK) != 0) return true;  // nothing to publish yet
    std::vector<char> copy(target.begin(), target.end());
    copy.push_back('\0');
    const char* base = basename(copy.data());
    if (base == nullptr) {
        zuvSyslog(LOG_WARNING, "basename(%s) returned NULL", target.c_str());
        return false;
    }
    const std::string link = directory + "/" + base;
    // A log that already lives where its link would go is left alone: the remove below would
    // delete the log itself. Same text, or another spelling of the same file.
    struct stat targetInfo {};
    struct stat linkInfo {};
    const bool sameFile = stat(target.c_str(), &targetInfo) == 0 && lstat(link.c_str(), &linkInfo) == 0 &&
                          targetInfo.st_dev == linkInfo.st_dev && targetInfo.st_ino == linkInfo.st_ino;
    if (target == link || sameFile) {
        zuvSyslog(LOG_WARNING,
                  "Target path(%s) matches symbolic link path(%s). Hence, symbolic link will not be created.",
                  target.c_str(), link.c_str());
        return false;
    }
    if (remove(link.c_str()) != 0 && errno != ENOENT) {
        zuvSyslog(LOG_WARNING, "remove(%s) completed with errno [%d]", link.c_str(), errno);
        return false;
    }
    if (symlink(target.c_str(), link.c_str()) != 0 && errno != EEXIST) {
        zuvSyslog(LOG_WARNING, "symlink(%s, %s) completed with errno [%d]", target.c_str(), link.c_str(), errno);
        return false;
    }
    return true;
}

zuvLogger::zuvLogger() {
    zuvConfig& config = zuvConfig::getInstance();  // may throw: then no logger exists
    const bool debugOn = config.isDebugLogEnabled();
    debugLogPath = config.getDebugLogLocation();
    logPath = config.getLogLocation();
    const std::string level = config.getLoggingLevel();

    logKind = kindOfLocation(logPath);
    debugKind = kindOfLocation(debugLogPath);
    debugLevel = debugOn ? 1 : 12;
    logLevel = levelOfText(level);

    if (logKind == kFile && createDirectories(logPath) != 0) {
        const int err = errno;
        zuvSyslog(LOG_ERR, "Failed to create directory path for ZUV log file [%s]: %d - %s", logPath.c_str(), err,
                  strerror(err));
        exit(-10);
    }
    if (debugKind == kFile && createDirectories(debugLogPath) != 0) {
        const int err = errno;
        zuvSyslog(LOG_ERR, "Failed to create directory path for ZUV debug log file [%s]: %d - %s", debugLogPath.c_str(),
                  err, strerror(err));
        exit(-11);
    }

    if (logKind == kFile) {
        auto* file = new std::ofstream(logPath, std::ios::app);
        if (!file->is_open()) {
            const int err = errno;
            zuvSyslog(LOG_ERR, "Error opening ZUV log file [%s]: %d - %s", logPath.c_str(), err, strerror(err));
        }
        logStream = file;
    } else if (logKind == kTerminal) {
        logStream = &std::cout;
    }

    if (debugKind == kFile && debugLevel == 1) {
        auto* file = new std::ofstream(debugLogPath, std::ios::app);
        if (!file->is_open()) {
            const int err = errno;
            zuvSyslog(LOG_ERR, "Error opening the ZUV debug log file[%s]: %d - %s", debugLogPath.c_str(), err,
                      strerror(err));
        }
        debugStream = file;
    } else if (debugKind == kTerminal) {
        debugStream = &std::cout;
    }

    if (logKind == kFile) publishLink(logPath, kPublishDirectory);
    if (debugKind == kFile) publishLink(debugLogPath, kPublishDirectory);
    publishLink(kBackupLog, kPublishDirectory);

    nextThreadNumber = firstThreadNumber;
}

int32_t zuvLogger::threadNumber() {
    const uint64_t id = static_cast<uint64_t>(pthread_self());
    auto found = threadNumbers.find(id);
    if (found != threadNumbers.end()) return found->second;
    const int32_t number = nextThreadNumber++;
    threadNumbers.emplace(id, number);
    return number;
}

void zuvLogger::write(const char* levelText, const std::string& message, const std::string& tag, int32_t line) {
    const int32_t kind = holds(levelText, "DEBUG") ? debugKind : logKind;
    if (kind == kFile || kind == kTerminal) {
        pthread_mutex_lock(&mutex);
        const std::string stamp = currentUtcTimestamp();
        const int32_t number = threadNumber();
        const std::string lineText = renderLineNumber(line);
        std::ostream* stream = nullptr;
        if (holds(levelText, "DEBUG")) {
            stream = debugStream;
        } else if (holds(levelText, "ERROR") || holds(levelText, "WARNING") || holds(levelText, "INFO")) {
            stream = logStream;
        }
        if (stream != nullptr) {
            *stream << stamp << ' ' << levelText << ' ' << number << ' ' << lineText << ' ' << tag << ": " << message
                    << std::endl;
        }
        pthread_mutex_unlock(&mutex);
    } else if (kind == kSyslog) {
        pthread_mutex_lock(&mutex);
        const int32_t number = threadNumber();
        const std::string text = std::string(levelText) + ' ' + std::to_string(number) + ' ' + renderLineNumber(line) +
                                 ' ' + tag + ": " + message + '\n';
        int priority = LOG_INFO;
        if (holds(levelText, "ERROR")) {
            priority = LOG_ERR;
        } else if (holds(levelText, "WARNING")) {
            priority = LOG_WARNING;
        } else if (holds(levelText, "DEBUG")) {
            priority = LOG_DEBUG;
        }
        if (!text.empty()) zuvSyslog(priority, "%s", text.c_str());
        pthread_mutex_unlock(&mutex);
    }
}

void zuvLogger::error(const std::string& message, const std::string& tag, int32_t line) {
    if (logLevel < 5) write(kErrorText, message, tag, line);
}

void zuvLogger::warning(const std::string& message, const std::string& tag, int32_t line) {
    if (logLevel < 4) write(kWarningText, message, tag, line);
}

void zuvLogger::info(const std::string& message, const std::string& tag, int32_t line) {
    if (logLevel < 3) write(kInfoText, message, tag, line);
}

void zuvLogger::debug(const std::string& message, const std::string& tag, int32_t line) {
    if (debugLevel == 1) write(kDebugText, message, tag, line);
}

void zuvLogger::infoAlways(const std::string& message, const std::string& tag, int32_t line) {
    write(kInfoText, message, tag, line);
}
