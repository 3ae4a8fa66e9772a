// The configuration store: every getter at its path and its default, and the syslog lines of each
// kind of load. The store is built once per process, so each configuration is read in a child.
#include "config/zuvConfig.h"

#include "zuvProcess.h"
#include "zuvSandbox.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

// Every getter as " key=value" words; "res" holds isResourceManagerEnabled of ids 0 1 2 3 4 5 6 8 99.
std::string gettersOf(const zuvConfig& c) {
    std::ostringstream s;
    s << " mode=" << c.getCliMode() << " push=" << c.getPushInventoryFrequencyInMinutes()
      << " level=" << c.getLoggingLevel() << " db=" << c.getIPMIDBSleepInterval()
      << " stack=" << c.getCaptureUnhandledExceptionStack() << " sim=" << c.getSimulateUnhandledException()
      << " mega=" << c.getForwardAllMegaRAIDCriticalOrHigherEvents()
      << " smart=" << c.getForwardAllSmartRAIDDegradedOrHigherEvents()
      << " inv=" << c.getInventoryQueryIntervalInSeconds() << " i2c=" << c.getI2CBusReleaseReserveGapInMilliSeconds()
      << " nvr=" << c.getNVMeBusyRetryCount() << " nvw=" << c.getNVMeBusyWaitIntervalInMilliSeconds()
      << " stats=" << c.getLogResourceManagerStatistics() << " mq=" << c.getMicrochipEventQueueIndex()
      << " hm=" << c.getHealthMonitorFlags() << " pcie=" << c.getEnablePCIeRegistersDataCollection()
      << " link=" << c.getEnablePCIeLinkStatusMonitoring() << " tpm=" << c.getTPMMonitoring()
      << " sys=" << c.getSyslogFileLocation() << " dbg=" << c.getDebugLogLocation() << " log=" << c.getLogLocation()
      << " refresh=" << c.getCacheRefreshInSeconds("Foo") << " tel=" << c.getTelemetry().type()
      << c.getTelemetry().size() << " debug=" << c.isDebugLogEnabled()
      << " error=" << (c.getParseError().failed ? "failed" : c.getParseError().text) << " res=";
    for (int id : {0, 1, 2, 3, 4, 5, 6, 8, 99}) s << c.isResourceManagerEnabled(id);
    return s.str() + " ";
}

const std::string S = "ZUV_CONFIG_INITIALIZING 10", P = "Parse Successful 0", F = "Parse Failed ";  // F: + errno's text
const std::string D = "ZUV_DEBUG_LOG_ENABLE ", D0 = D + "0-0-0";

const std::string kDefaults =
    " mode=test push=1440 level=Warning db=10 stack=0 sim=0 mega=0 smart=0 inv=10 i2c=64 nvr=3 nvw=1000 stats=0 mq=0"
    " hm=0 pcie=0 link=0 tpm=1 sys=syslog dbg=syslog log=syslog refresh=30 tel=00 debug=0 error=no-error"
    " res=000000000 ";

// Every key at its path, each with a value other than its default.
const std::string kEveryKey =
    R"("CliMode":"TEST","PushInventoryFrequencyInMinutes":60,"LoggingLevel":"Info","IPMIDBSleepInterval":2.0,)"
    R"("CaptureUnhandledExceptionStack":true,"SimulateUnhandledException":3,)"
    R"("ForwardAllMegaRAIDCriticalOrHigherEvents":true,"ForwardAllSmartRAIDDegradedOrHigherEvents":true,)"
    R"("InventoryQueryIntervalInSeconds":11,"LogResourceManagerStatistics":true,"MicrochipEventQueueIndex":4,)"
    R"("HealthMonitorFlags":5,"StorageControllers":{"MegaRAID":{"I2CBusReleaseReserveGapInMilliSeconds":65},)"
    R"("VROC":{"NVMeBusyRetryCount":6,"NVMeBusyWaitIntervalInMilliSeconds":7}},)"
    R"("HostOsServices":{"EnablePCIeRegistersDataCollection":true,"EnablePCIeLinkStatusMonitoring":true,)"
    R"("TPMMonitoring":false,"SyslogFileLocation":"/var/log/x"},"DebugLogLocation":"/d/dbg.log",)"
    R"("ZUVLogLocation":"terminal","CacheRefreshInSeconds":{"Global":60,"Foo":5},"Telemetry":{"x":1})";
const std::string kEveryKeyRead =
    "mode=TEST push=60 level=Info db=2 stack=1 sim=3 mega=1 smart=1 inv=11 i2c=65 nvr=6 nvw=7 stats=1 mq=4 hm=5"
    " pcie=1 link=1 tpm=0 sys=/var/log/x dbg=/d/dbg.log log=terminal refresh=5 tel=71";

TEST(ConfigStore, GettersGiveTheValueOfTheRightTypeAtTheirPathElseTheDefaultAndSyslogTellsHowTheLoadWent) {
    // The file's members behind {"a":1, (or "=" and a whole file); the words that differ from the defaults.
    struct Case {
        std::string file, differ;
        std::vector<std::string> syslog = {S, P, D0};
    };
    const Case cases[] = {
        {R"("CliMode":5,"IPMIDBSleepInterval":"10","ZUVLogLocation":7,"DebugLogLocation":[],)"  // wrong types
         R"("HostOsServices":{"TPMMonitoring":"no"},"StorageControllers":{"VROC":3},)"
         R"("PushInventoryFrequencyInMinutes":2.5,"LoggingLevel":false,"CacheRefreshInSeconds":5)",
         ""},
        {kEveryKey, kEveryKeyRead},
        {R"("CacheRefreshInSeconds":{"Global":60})", "refresh=60"},
        {R"("CacheRefreshInSeconds":{"Foo":7.9})", "refresh=7"},
        {R"("CacheRefreshInSeconds":{"Foo":"abc","Global":60})", ""},  // no number: the default, not Global
        {R"("EnableResources":["All"])", "res=111111011"},
        {R"("EnableResources":["StorageControllers"])", "res=001000010"},
        {R"j("EnableResources":["StorageControllers (SASRM)"])j", "res=001000000"},
        {R"j("EnableResources":["StorageControllers (RSRM)"])j", "res=000000010"},
        {R"("EnableResources":["HostOSInfo","Utilization","GPUDevices","EthernetDevices"])", "res=010101001"},
        {R"("EnableResources":["FibreChannelDevices","NVMeControllers",5,"All"])", "res=100010000"},  // 5 ends the walk
        {R"("EnableResources":{"x":"All"})", ""},
        {R"("EnableDebugLog":true)", "debug=1", {S, P, D + "5-1-1"}},
        {R"("EnableDebugLog":false)", "", {S, P, D + "5-1-0"}},
        {R"("EnableDebugLog":1)", "", {S, P, D + "1-0-1"}},  // true, but no bool
        {R"("EnableDebugLog":"yes")", "", {S, P}},           // not even that: no line
        {"=", "error=failed", {S, F, D0}},
        {R"(={"CliMode":"full"})", "mode=full", {S, F, D0}},  // one member: a failure, but read
        {"=" + std::string(1100, '['),                        // the parser throws
         "",
         {S, "Config /vital/zuv.conf Uninitlized : will use the default configurations", D0}},
    };
    for (const Case& c : cases) {
        zuvtest::writeConfig(c.file[0] == '=' ? c.file.substr(1) : R"({"a":1,)" + c.file + "}");
        zuvtest::SyslogCollector syslogLines;
        std::string expected = kDefaults;
        std::istringstream words(c.differ);
        for (std::string word; words >> word;) {  // in place of the default word of the same key
            const size_t at = expected.find(" " + word.substr(0, word.find('=') + 1));
            expected.replace(at + 1, expected.find(' ', at + 1) - at - 1, word);
        }
        EXPECT_EQ(zuvtest::inChild([] { return gettersOf(zuvConfig::getInstance()); }).text, expected)
            << c.file.substr(0, 60);
        std::vector<std::string> logged;
        for (const zuvtest::SyslogLine& line : syslogLines.lines()) {              // the text of errno behind F varies
            EXPECT_EQ(line.ident + " " + std::to_string(line.priority), "zuv 12")  // user.warning
                << line.message;
            logged.push_back(line.message.substr(0, line.message.rfind(F, 0) ? std::string::npos : F.size()));
        }
        EXPECT_EQ(logged, c.syslog) << c.file.substr(0, 60);
    }
}

}  // namespace
