// libFuzzer harness over the configuration store: any document is loaded and every getter asked.
// A getter never fails: an exception out of one, or out of the load, is a finding.
#include <sstream>

#include "config/zuvConfig.h"
#include "fuzzHarness.h"

namespace {

struct ConfigFromText : zuvConfig {
    explicit ConfigFromText(std::istream& document) : zuvConfig(document) {}
};

void askEveryGetter(const zuvConfig& config, const std::string& name) {
    std::ostringstream sink;  // takes every answer, so that none of the calls can be left out
    sink << config.isDebugLogEnabled() << config.getCliMode() << config.getPushInventoryFrequencyInMinutes()
         << config.getCacheRefreshInSeconds(name) << config.getCacheRefreshInSeconds("Global")
         << config.getCacheRefreshInSeconds("") << config.isResourceEnabled(name) << config.getLoggingLevel()
         << config.getIPMIDBSleepInterval() << config.getCaptureUnhandledExceptionStack()
         << config.getSimulateUnhandledException() << config.getForwardAllMegaRAIDCriticalOrHigherEvents()
         << config.getForwardAllSmartRAIDDegradedOrHigherEvents() << config.getInventoryQueryIntervalInSeconds()
         << config.getI2CBusReleaseReserveGapInMilliSeconds() << config.getNVMeBusyRetryCount()
         << config.getNVMeBusyWaitIntervalInMilliSeconds() << config.getLogResourceManagerStatistics()
         << config.getMicrochipEventQueueIndex() << config.getHealthMonitorFlags()
         << config.getEnablePCIeRegistersDataCollection() << config.getEnablePCIeLinkStatusMonitoring()
         << config.getTPMMonitoring() << config.getSyslogFileLocation() << config.getDebugLogLocation()
         << config.getLogLocation() << config.getTelemetry() << config.getParseError().failed;
    for (int id : {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 99})
        if (config.isResourceManagerEnabled(id) && (id == 6 || id == 7 || id == -1)) abort();  // ids without a name
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = textOf(data, size);
    std::istringstream document(text);
    ConfigFromText config(document);
    // The names asked for are the document's own first key as well as the fixed ones.
    const size_t quote = text.find('"');
    const size_t end = quote == std::string::npos ? quote : text.find('"', quote + 1);
    askEveryGetter(config, end == std::string::npos ? "EthernetDevices" : text.substr(quote + 1, end - quote - 1));
    return 0;
}
