#pragma once
// The real zuvCli against the simulated service, both inside the test sandbox.

#include "zuvProcess.h"
#include "zuvSandbox.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

extern const char* const kFullModeConfig;
extern const char* const kTestModeConfig;

class CliFixture : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Starts the simulated service with extra options; waits for its pipe.
    void startService(const std::vector<std::string>& options = {});
    zuvtest::ProcessResult cli(const std::vector<std::string>& args, int timeoutMs = 10000);
    // Every packet the service received: 17 meta bytes then the payload.
    std::vector<std::vector<uint8_t>> packets();
    // Payload texts of the packets received, in order.
    std::vector<std::string> payloads();
    // Reply pipes that are left in /var/run.
    std::vector<std::string> replyPipesLeft();

    zuvtest::BackgroundProcess service;
};

uint16_t messageTypeOf(const std::vector<uint8_t>& packet);
uint32_t u32At(const std::vector<uint8_t>& packet, size_t offset);
