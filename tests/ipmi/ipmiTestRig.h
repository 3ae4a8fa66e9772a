#pragma once
// What the IPMI tests share: the log in sandbox files, a fresh simulated RMC behind the device seam.

#include "ipmi/zuvIPMIDeviceSystem.h"
#include "ipmi/zuvIPMIService.h"
#include "zuvSimRmcDevice.h"
#include "zuvProcess.h"
#include "zuvTestLog.h"

#include <gtest/gtest.h>

#include <memory>
#include <tuple>

using Step = zuvsim::SimulatedRmcDevice::Step;
using Bytes = std::vector<uint8_t>;
using Lines = std::vector<std::string>;

inline const std::string kSendFailed =
    "ERROR   Request ioctl failure with error code : -1\nERROR IPMI exec failed std::exception\n";

inline Bytes counting(int n) {
    Bytes bytes;
    while (static_cast<int>(bytes.size()) < n) bytes.push_back(static_cast<uint8_t>(bytes.size() + 1));
    return bytes;
}

using zuvtest::thrown;

class IpmiTest : public ::testing::Test {
protected:
    void SetUp() override { reset(); }
    void TearDown() override {
        service.reset();
        zuvIPMI::setDeviceSystem(nullptr);
    }
    // A new RMC, device and service; the record of the opening and the logs are cleared.
    void reset() {
        zuvtest::startFileLogging();
        service.reset();
        rmc = std::make_unique<zuvsim::SimulatedRmc>();
        device = std::make_unique<zuvsim::SimulatedRmcDevice>(*rmc);
        zuvIPMI::setDeviceSystem(device.get());
        service = std::make_unique<zuvIPMIService>(64);
        device->clearRecord();
        zuvtest::clearLogs();
    }
    // The tag's lines as "LEVEL message", in order: errors, warnings, and the debug lines `expected` names (or all).
    static std::string logged(const std::string& expected, const char* tag = "ZUV_IPMI_SERVICE",
                              bool allDebug = false) {
        std::string out;
        for (const std::string level : {"ERROR", "WARNING", "DEBUG"}) {
            const char* file = level == "DEBUG" ? zuvtest::kDebugLog : zuvtest::kMainLog;
            for (const std::string& message : zuvtest::logMessages(file, tag, level)) {
                const std::string line = level + " " + message;
                const bool named = ("\n" + expected + "\n").find("\n" + line + "\n") != std::string::npos;
                if (level != "DEBUG" || allDebug || named) out += (out.empty() ? "" : "\n") + line;
            }
        }
        return out;
    }

    std::unique_ptr<zuvsim::SimulatedRmc> rmc;
    std::unique_ptr<zuvsim::SimulatedRmcDevice> device;
    std::unique_ptr<zuvIPMIService> service;
};
