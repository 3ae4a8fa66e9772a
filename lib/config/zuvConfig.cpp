#include "config/zuvConfig.h"

#include "config/zuvSyslog.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <stdexcept>

namespace {

const char* const kProductRoot = "/opt/kelzuv";
const char* const kConfigFile = "/vital/zuv.conf";

// The member at a path of keys, or null when a step is missing or not an object.
// Uses only const access, so the document stays as it was parsed.
const Json::Value& memberAt(const Json::Value& root, std::initializer_list<const char*> path) {
    static const Json::Value none;
    const Json::Value* node = &root;
    for (const char* key : path) {
        if (!node->isObject()) return none;
        node = &(*node)[key];
    }
    return *node;
}

int32_t intAt(const Json::Value& root, std::initializer_list<const char*> path, int32_t fallback) {
    try {
        const Json::Value& v = memberAt(root, path);
        return v.isInt() ? v.asInt() : fallback;
    } catch (...) {
        return fallback;
    }
}

bool boolAt(const Json::Value& root, std::initializer_list<const char*> path, bool fallback) {
    try {
        const Json::Value& v = memberAt(root, path);
        return v.isBool() ? v.asBool() : fallback;
    } catch (...) {
        return fallback;
    }
}

std::string stringAt(const Json::Value& root, std::initializer_list<const char*> path, const char* fallback) {
    try {
        const Json::Value& v = memberAt(root, path);
        return v.isString() ? v.asString() : std::string(fallback);
    } catch (...) {
        return fallback;
    }
}

}  // namespace

std::string zuvConfig::getRootPrefix() { return ""; }

std::string zuvConfig::configPath() { return getRootPrefix() + kProductRoot + kConfigFile; }

zuvConfig& zuvConfig::getInstance() {
    static zuvConfig instance;
    return instance;
}

zuvConfig::zuvConfig() {
    zuvSyslog(LOG_WARNING, "ZUV_CONFIG_INITIALIZING %d", 10);
    const std::string path = configPath();
    std::ifstream file(path);
    if (!file.is_open()) {
        zuvSyslog(LOG_WARNING, "Config %s Couldnt open", path.c_str());
        throw std::runtime_error("Config Uninitlized : will use the default configurations");
    }
    load(file);
}

zuvConfig::zuvConfig(std::istream& document) {
    zuvSyslog(LOG_WARNING, "ZUV_CONFIG_INITIALIZING %d", 10);
    load(document);
}

zuvConfig::~zuvConfig() = default;

void zuvConfig::load(std::istream& document) {
    try {
        Json::CharReaderBuilder builder;
        std::string errs;
        const bool parsed = Json::parseFromStream(builder, document, &root, &errs);
        if (parsed && root.size() > 1) {
            zuvSyslog(LOG_WARNING, "Parse Successful %d", 0);
        } else {
            errorText = std::strerror(errno);
            zuvSyslog(LOG_WARNING, "Parse Failed %s", errorText.c_str());
        }
    } catch (...) {
        zuvSyslog(LOG_WARNING, "Config %s Uninitlized : will use the default configurations",
                  (getRootPrefix() + kConfigFile).c_str());
    }
}

bool zuvConfig::isDebugLogEnabled() const {
    try {
        const Json::Value& v = memberAt(root, {"EnableDebugLog"});
        const bool asBool = v.asBool();  // throws for values that can't be a bool
        zuvSyslog(LOG_WARNING, "ZUV_DEBUG_LOG_ENABLE %d-%d-%d", static_cast<int>(v.type()), v.isBool() ? 1 : 0,
                  asBool ? 1 : 0);
        return v.isBool() ? asBool : false;
    } catch (...) {
        return false;
    }
}

std::string zuvConfig::getCliMode() const { return stringAt(root, {"CliMode"}, "test"); }

int32_t zuvConfig::getCacheRefreshInSeconds(const std::string& name) const {
    try {
        const Json::Value& section = memberAt(root, {"CacheRefreshInSeconds"});
        if (!section[name].empty()) return section[name].asInt();
        if (!section["Global"].empty()) return section["Global"].asInt();
    } catch (...) {
    }
    return 30;
}

int32_t zuvConfig::getPushInventoryFrequencyInMinutes() const {
    return intAt(root, {"PushInventoryFrequencyInMinutes"}, 1440);
}

// A list of any other shape than an array of strings is the empty default; the walk ends with
// false at the first element that is no string, whatever stands behind it.
bool zuvConfig::isResourceEnabled(const std::string& name) const {
    try {
        const Json::Value& list = memberAt(root, {"EnableResources"});
        if (!list.isArray()) return false;
        for (const Json::Value& element : list) {
            if (!element.isString()) return false;
            if (element.asString() == name || element.asString() == "All") return true;
        }
    } catch (...) {
    }
    return false;
}

bool zuvConfig::isResourceManagerEnabled(int id) const {
    switch (id) {
        case 0: return isResourceEnabled("FibreChannelDevices");
        case 1: return isResourceEnabled("HostOSInfo");
        case 2: return isResourceEnabled("StorageControllers") || isResourceEnabled("StorageControllers (SASRM)");
        case 3: return isResourceEnabled("EthernetDevices");
        case 4: return isResourceEnabled("NVMeControllers");
        case 5: return isResourceEnabled("GPUDevices");
        case 8: return isResourceEnabled("StorageControllers") || isResourceEnabled("StorageControllers (RSRM)");
        case 99: return isResourceEnabled("Utilization");
        default: return false;
    }
}

std::string zuvConfig::getLoggingLevel() const { return stringAt(root, {"LoggingLevel"}, "Warning"); }

int32_t zuvConfig::getIPMIDBSleepInterval() const { return intAt(root, {"IPMIDBSleepInterval"}, 10); }

bool zuvConfig::getCaptureUnhandledExceptionStack() const {
    return boolAt(root, {"CaptureUnhandledExceptionStack"}, false);
}

int32_t zuvConfig::getSimulateUnhandledException() const { return intAt(root, {"SimulateUnhandledException"}, 0); }

bool zuvConfig::getForwardAllMegaRAIDCriticalOrHigherEvents() const {
    return boolAt(root, {"ForwardAllMegaRAIDCriticalOrHigherEvents"}, false);
}

bool zuvConfig::getForwardAllSmartRAIDDegradedOrHigherEvents() const {
    return boolAt(root, {"ForwardAllSmartRAIDDegradedOrHigherEvents"}, false);
}

int32_t zuvConfig::getInventoryQueryIntervalInSeconds() const {
    return intAt(root, {"InventoryQueryIntervalInSeconds"}, 10);
}

int32_t zuvConfig::getI2CBusReleaseReserveGapInMilliSeconds() const {
    return intAt(root, {"StorageControllers", "MegaRAID", "I2CBusReleaseReserveGapInMilliSeconds"}, 64);
}

int32_t zuvConfig::getNVMeBusyRetryCount() const {
    return intAt(root, {"StorageControllers", "VROC", "NVMeBusyRetryCount"}, 3);
}

int32_t zuvConfig::getNVMeBusyWaitIntervalInMilliSeconds() const {
    return intAt(root, {"StorageControllers", "VROC", "NVMeBusyWaitIntervalInMilliSeconds"}, 1000);
}

bool zuvConfig::getLogResourceManagerStatistics() const {
    return boolAt(root, {"LogResourceManagerStatistics"}, false);
}

int32_t zuvConfig::getMicrochipEventQueueIndex() const { return intAt(root, {"MicrochipEventQueueIndex"}, 0); }

int32_t zuvConfig::getHealthMonitorFlags() const { return intAt(root, {"HealthMonitorFlags"}, 0); }

bool zuvConfig::getEnablePCIeRegistersDataCollection() const {
    return boolAt(root, {"HostOsServices", "EnablePCIeRegistersDataCollection"}, false);
}

bool zuvConfig::getEnablePCIeLinkStatusMonitoring() const {
    return boolAt(root, {"HostOsServices", "EnablePCIeLinkStatusMonitoring"}, false);
}

bool zuvConfig::getTPMMonitoring() const { return boolAt(root, {"HostOsServices", "TPMMonitoring"}, true); }

std::string zuvConfig::getSyslogFileLocation() const {
    return stringAt(root, {"HostOsServices", "SyslogFileLocation"}, "syslog");
}

std::string zuvConfig::getDebugLogLocation() const {
    const Json::Value& v = memberAt(root, {"DebugLogLocation"});
    return v.isString() ? getRootPrefix() + v.asString() : std::string("syslog");
}

std::string zuvConfig::getLogLocation() const {
    const Json::Value& v = memberAt(root, {"ZUVLogLocation"});
    return v.isString() ? getRootPrefix() + v.asString() : std::string("syslog");
}

Json::Value zuvConfig::getTelemetry() const {
    try {
        return memberAt(root, {"Telemetry"});
    } catch (...) {
        return Json::Value();
    }
}

zuvParseError zuvConfig::getParseError() const {
    if (root.isNull()) return {errorText, true};
    return {"no-error", false};
}
