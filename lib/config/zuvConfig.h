#pragma once
// The one configuration file of a process, read once, handed out through typed getters
// that never fail: a missing key or a value of the wrong type gives the key's default.

#include <json/json.h>

#include <cstdint>
#include <istream>
#include <string>

struct zuvParseError {
    std::string text;
    bool failed;
};

class zuvConfig {
public:
    // Builds the store at first use; throws std::runtime_error when the file can't be
    // opened, and the next call then tries again from the start.
    static zuvConfig& getInstance();
    static std::string getRootPrefix();

    virtual ~zuvConfig();
    zuvConfig(const zuvConfig&) = delete;
    zuvConfig& operator=(const zuvConfig&) = delete;

    bool isDebugLogEnabled() const;
    std::string getCliMode() const;
    int32_t getCacheRefreshInSeconds(const std::string& name) const;
    int32_t getPushInventoryFrequencyInMinutes() const;
    bool isResourceEnabled(const std::string& name) const;
    bool isResourceManagerEnabled(int id) const;
    std::string getLoggingLevel() const;
    int32_t getIPMIDBSleepInterval() const;
    bool getCaptureUnhandledExceptionStack() const;
    int32_t getSimulateUnhandledException() const;
    bool getForwardAllMegaRAIDCriticalOrHigherEvents() const;
    bool getForwardAllSmartRAIDDegradedOrHigherEvents() const;
    int32_t getInventoryQueryIntervalInSeconds() const;
    int32_t getI2CBusReleaseReserveGapInMilliSeconds() const;
    int32_t getNVMeBusyRetryCount() const;
    int32_t getNVMeBusyWaitIntervalInMilliSeconds() const;
    bool getLogResourceManagerStatistics() const;
    int32_t getMicrochipEventQueueIndex() const;
    int32_t getHealthMonitorFlags() const;
    bool getEnablePCIeRegistersDataCollection() const;
    bool getEnablePCIeLinkStatusMonitoring() const;
    bool getTPMMonitoring() const;
    std::string getSyslogFileLocation() const;
    std::string getDebugLogLocation() const;
    std::string getLogLocation() const;
    Json::Value getTelemetry() const;
    zuvParseError getParseError() const;

    // The full path of the configuration file.
    static std::string configPath();

protected:
    // A store over a document that the caller opened, for a process that checks documents
    // without the fixed file; the same syslog lines and the same rules as the file's load.
    explicit zuvConfig(std::istream& document);

private:
    zuvConfig();
    void load(std::istream& document);

    Json::Value root;
    std::string errorText;
};
