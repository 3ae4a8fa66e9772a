#pragma once
// What the IPMI tests share: the logger configured to files inside the sandbox and read back,
// and a simulated RMC installed behind the device seam for the length of one test.

#include "ipmi/zuvIPMIDeviceSystem.h"
#include "ipmi/zuvIPMIService.h"
#include "zuvSimRmc.h"
#include "zuvSimRmcDevice.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ipmitest {

struct LogLine {
    std::string level;  // "ERROR", "WARNING", "INFO" or "DEBUG"
    std::string tag;
    std::string message;
};

// Lines written to the main and the debug log since construction (or the last mark()).
class LogCapture {
public:
    LogCapture();
    void mark();
    std::vector<LogLine> lines() const;
    std::vector<std::string> messages(const std::string& level) const;
    bool has(const std::string& level, const std::string& message) const;

private:
    size_t mainStart = 0;
    size_t debugStart = 0;
};

// Writes the configuration (all levels, debug on, both logs to files) and builds the logger.
void ensureLogger();

class IpmiTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    // A service of the test's own over the simulated RMC; the record of its opening is cleared.
    std::unique_ptr<zuvIPMIService> makeService();

    zuvsim::SimulatedRmc rmc;
    zuvsim::SimulatedRmcDevice device{rmc};
    LogCapture log;
};

uint16_t le16(const std::vector<uint8_t>& bytes, size_t at);

}  // namespace ipmitest
