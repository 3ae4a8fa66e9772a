// The configuration store: defaults, type tests, resource tables and its syslog lines. The store
// is built once per process, so each configuration is read in a child process of its own.
#include "config/zuvConfig.h"

#include "zuvChild.h"
#include "zuvSandbox.h"

#include <gtest/gtest.h>

#include <syslog.h>
#include <unistd.h>

#include <sstream>

namespace {

// Every getter, in one line, from a fresh store over `json`.
std::string gettersOver(const std::string& json) {
    zuvtest::writeConfig(json);
    return zuvtest::inChild([] {
               const zuvConfig& c = zuvConfig::getInstance();
               std::ostringstream s;
               s << "mode=" << c.getCliMode() << " push=" << c.getPushInventoryFrequencyInMinutes()
                 << " level=" << c.getLoggingLevel() << " db=" << c.getIPMIDBSleepInterval()
                 << " stack=" << c.getCaptureUnhandledExceptionStack() << " sim=" << c.getSimulateUnhandledException()
                 << " mega=" << c.getForwardAllMegaRAIDCriticalOrHigherEvents()
                 << " smart=" << c.getForwardAllSmartRAIDDegradedOrHigherEvents()
                 << " inv=" << c.getInventoryQueryIntervalInSeconds()
                 << " i2c=" << c.getI2CBusReleaseReserveGapInMilliSeconds() << " nvr=" << c.getNVMeBusyRetryCount()
                 << " nvw=" << c.getNVMeBusyWaitIntervalInMilliSeconds()
                 << " stats=" << c.getLogResourceManagerStatistics() << " mq=" << c.getMicrochipEventQueueIndex()
                 << " hm=" << c.getHealthMonitorFlags() << " pcie=" << c.getEnablePCIeRegistersDataCollection()
                 << " link=" << c.getEnablePCIeLinkStatusMonitoring() << " tpm=" << c.getTPMMonitoring()
                 << " sys=" << c.getSyslogFileLocation() << " dbg=" << c.getDebugLogLocation()
                 << " log=" << c.getLogLocation() << " refresh=" << c.getCacheRefreshInSeconds("Foo")
                 << " tel=" << c.getTelemetry().isNull() << " err=" << c.getParseError().failed;
               return s.str();
           })
        .text;
}

const std::string kDefaults =
    "mode=test push=1440 level=Warning db=10 stack=0 sim=0 mega=0 smart=0 inv=10 i2c=64 nvr=3 nvw=1000 stats=0 "
    "mq=0 hm=0 pcie=0 link=0 tpm=1 sys=syslog dbg=syslog log=syslog refresh=30 tel=1 err=0";

TEST(ConfigStore, GettersGiveDefaultsForMissingOrMistypedKeys) {
    // Documents that parse but say nothing, or hold values of the wrong types, give every default.
    for (const std::string json : {R"({"a":1,"b":2})",
                                   R"({"CliMode":5,"IPMIDBSleepInterval":"10","EnableDebugLog":"yes","ZUVLogLocation":7,
              "DebugLogLocation":[],"HostOsServices":{"TPMMonitoring":"no"},"StorageControllers":{"VROC":3},
              "PushInventoryFrequencyInMinutes":2.5,"LoggingLevel":false})"}) {
        EXPECT_EQ(gettersOver(json), kDefaults) << json;
    }
}

TEST(ConfigStore, GettersReadEveryKeyAtItsPath) {
    const std::string json = R"({"CliMode":"TEST","PushInventoryFrequencyInMinutes":60,"LoggingLevel":"Info",
        "IPMIDBSleepInterval":2.0,"CaptureUnhandledExceptionStack":true,"SimulateUnhandledException":3,
        "ForwardAllMegaRAIDCriticalOrHigherEvents":true,"ForwardAllSmartRAIDDegradedOrHigherEvents":true,
        "InventoryQueryIntervalInSeconds":11,"LogResourceManagerStatistics":true,"MicrochipEventQueueIndex":4,
        "HealthMonitorFlags":5,"StorageControllers":{"MegaRAID":{"I2CBusReleaseReserveGapInMilliSeconds":65},
        "VROC":{"NVMeBusyRetryCount":6,"NVMeBusyWaitIntervalInMilliSeconds":7}},
        "HostOsServices":{"EnablePCIeRegistersDataCollection":true,"EnablePCIeLinkStatusMonitoring":true,
        "TPMMonitoring":false,"SyslogFileLocation":"/var/log/x"},"DebugLogLocation":"/d/dbg.log",
        "ZUVLogLocation":"terminal","CacheRefreshInSeconds":{"Global":60,"Foo":5},"Telemetry":{"x":1}})";
    EXPECT_EQ(gettersOver(json),
              "mode=TEST push=60 level=Info db=2 stack=1 sim=3 mega=1 smart=1 inv=11 i2c=65 nvr=6 nvw=7 stats=1 "
              "mq=4 hm=5 pcie=1 link=1 tpm=0 sys=/var/log/x dbg=/d/dbg.log log=terminal refresh=5 tel=0 err=0");
}

TEST(ConfigStore, CacheRefreshFallsBackToGlobalThenThirty) {
    struct Case {
        std::string section;
        std::string name;
        int expected;
    };
    const Case cases[] = {
        {R"({"Global":60})", "Any", 60}, {R"({"Global":60,"Foo":5})", "Foo", 5},
        {R"({"Foo":"abc"})", "Foo", 30}, {R"({})", "Foo", 30},
        {R"({"Foo":7.9})", "Foo", 7},    {R"(5)", "Foo", 30},
    };
    for (const Case& c : cases) {
        zuvtest::writeConfig(R"({"a":1,"CacheRefreshInSeconds":)" + c.section + "}");
        const std::string name = c.name;
        EXPECT_EQ(zuvtest::inChild([name] {
                      return std::to_string(zuvConfig::getInstance().getCacheRefreshInSeconds(name));
                  }).text,
                  std::to_string(c.expected))
            << c.section;
    }
}

TEST(ConfigStore, ResourceManagersFollowTheNamesInEnableResources) {
    struct Case {
        std::string list;
        std::string enabled;  // ids 0,1,2,3,4,5,6,8,99 as 0/1
    };
    const Case cases[] = {
        {R"(["All"])", "111111011"},
        {R"j(["StorageControllers (SASRM)"])j", "001000000"},
        {R"j(["StorageControllers (RSRM)"])j", "000000010"},
        {R"(["StorageControllers"])", "001000010"},
        {R"(["HostOSInfo","Utilization","GPUDevices"])", "010001001"},
        {R"(["FibreChannelDevices",["x"],"All"])", "100000000"},  // an unreadable element ends the walk
        {R"("All")", "000000000"},
        {R"([])", "000000000"},
    };
    for (const Case& c : cases) {
        zuvtest::writeConfig(R"({"a":1,"EnableResources":)" + c.list + "}");
        EXPECT_EQ(zuvtest::inChild([] {
                      std::string bits;
                      for (int id : {0, 1, 2, 3, 4, 5, 6, 8, 99})
                          bits += zuvConfig::getInstance().isResourceManagerEnabled(id) ? '1' : '0';
                      return bits;
                  }).text,
                  c.enabled)
            << c.list;
    }
}

TEST(ConfigStore, SyslogTellsHowTheLoadWent) {
    struct Case {
        std::string content;
        std::vector<std::string> lines;
        bool parseFailed;
    };
    const Case cases[] = {
        {R"({"a":1,"b":2})", {"ZUV_CONFIG_INITIALIZING 10", "Parse Successful 0"}, false},
        {"", {"ZUV_CONFIG_INITIALIZING 10", "Parse Failed "}, true},
        {"{}", {"ZUV_CONFIG_INITIALIZING 10", "Parse Failed "}, false},
        {R"({"CliMode":"full"})", {"ZUV_CONFIG_INITIALIZING 10", "Parse Failed "}, false},
        {"not json", {"ZUV_CONFIG_INITIALIZING 10", "Parse Failed "}, true},
    };
    for (const Case& c : cases) {
        zuvtest::writeConfig(c.content);
        zuvtest::SyslogCollector syslogLines;
        const auto result = zuvtest::inChild([] {
            const auto error = zuvConfig::getInstance().getParseError();
            return std::string(error.failed ? "failed" : "ok") + ":" + zuvConfig::getInstance().getCliMode();
        });
        const auto lines = syslogLines.lines();
        ASSERT_EQ(lines.size(), c.lines.size()) << c.content;
        for (size_t i = 0; i < lines.size(); ++i) {
            // "Parse Failed " is followed by the text of errno, whatever it was.
            EXPECT_EQ(lines[i].message.rfind(c.lines[i], 0), 0u) << lines[i].message;
            EXPECT_EQ(lines[i].priority, LOG_WARNING);
            EXPECT_EQ(lines[i].ident, "zuv");
        }
        EXPECT_EQ(result.text.rfind(c.parseFailed ? "failed:" : "ok:", 0), 0u) << c.content << result.text;
    }
    // One top-level member is a "failed" parse in the words of syslog, but its getter still finds it.
    zuvtest::writeConfig(R"({"CliMode":"full"})");
    EXPECT_EQ(zuvtest::inChild([] { return zuvConfig::getInstance().getCliMode(); }).text, "full");
}

TEST(ConfigStore, MissingFileThrowsAndTheNextCallBuildsAgain) {
    unlink("/opt/kelzuv/vital/zuv.conf");
    zuvtest::SyslogCollector syslogLines;
    const auto result = zuvtest::inChild([] {
        std::string first;
        try {
            zuvConfig::getInstance();
            first = "built";
        } catch (const std::runtime_error& e) {
            first = e.what();
        }
        zuvtest::writeConfig(R"({"CliMode":"full","a":1})");
        return first + "|" + zuvConfig::getInstance().getCliMode();
    });
    EXPECT_EQ(result.text, "Config Uninitlized : will use the default configurations|full");
    EXPECT_EQ(syslogLines.messages(),
              (std::vector<std::string>{"ZUV_CONFIG_INITIALIZING 10", "Config /opt/kelzuv/vital/zuv.conf Couldnt open",
                                        "ZUV_CONFIG_INITIALIZING 10", "Parse Successful 0"}));
}

TEST(ConfigStore, DebugLogFlagIsReportedWithItsJsonType) {
    struct Case {
        std::string value;
        std::string line;  // empty: no line
        std::string result;
    };
    const Case cases[] = {
        {"true", "ZUV_DEBUG_LOG_ENABLE 5-1-1", "1"}, {"false", "ZUV_DEBUG_LOG_ENABLE 5-1-0", "0"},
        {"1", "ZUV_DEBUG_LOG_ENABLE 1-0-1", "0"},                            // converts to true but is no bool
        {"null", "ZUV_DEBUG_LOG_ENABLE 0-0-0", "0"}, {R"("yes")", "", "0"},  // can't be converted: no line
    };
    for (const Case& c : cases) {
        zuvtest::writeConfig(R"({"a":1,"EnableDebugLog":)" + c.value + "}");
        zuvtest::SyslogCollector syslogLines;
        const auto result = zuvtest::inChild([] {
            zuvConfig::getInstance();
            return std::string("|") + (zuvConfig::getInstance().isDebugLogEnabled() ? "1" : "0");
        });
        auto messages = syslogLines.messages();
        ASSERT_GE(messages.size(), 2u);
        messages.erase(messages.begin(), messages.begin() + 2);  // the load's own lines
        EXPECT_EQ(messages, c.line.empty() ? std::vector<std::string>{} : std::vector<std::string>{c.line}) << c.value;
        EXPECT_EQ(result.text, "|" + c.result) << c.value;
    }
}

}  // namespace
