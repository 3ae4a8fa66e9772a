// Against the simulated RMC behind QEMU's external BMC device. Each test announces its phase
// to the host, which then sets the RMC up for it; the host compares what the RMC received
// with a run of the same calls through the device seam.
#include "externPhase.h"
#include "ipmi/zuvIPMIExceptions.h"
#include "ipmi/zuvIPMIService.h"
#include "rmcScenarios.h"
#include "zuvSimRmc.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

zuvIPMIService& service() { return *static_cast<zuvIPMIService*>(zuvIPMIService::getIPMIServiceInstance()); }

int sdrTransactions(const std::vector<std::vector<uint8_t>>& records) {
    int count = 0;
    for (const auto& r : records) count += 1 + (r[4] + 15) / 16;
    return count;
}

}  // namespace

TEST(Extern, BlockCommandsReachTheRmcWhole) {
    zuvkernel::announce("blocks");
    auto outcome = zuvkernel::runPhase("blocks", service());
    EXPECT_EQ((std::vector<int>{0, 0, 0}), outcome.results);
    EXPECT_TRUE(outcome.exceptions.empty());
}

TEST(Extern, RmcStatusesAboveTwoAreNoFailure) {
    zuvkernel::announce("statuses");
    auto outcome = zuvkernel::runPhase("statuses", service());
    EXPECT_TRUE(outcome.exceptions.empty());
}

TEST(Extern, DoorBellsOfAllKinds) {
    zuvkernel::announce("doorbells");
    auto outcome = zuvkernel::runPhase("doorbells", service());
    EXPECT_EQ((std::vector<int>{1, 1, 1, 0}), outcome.results);
}

TEST(Extern, RepositoryLoadSurvivesACancelledReservation) {
    zuvkernel::announce("sdr");
    auto outcome = zuvkernel::runPhase("sdr", service());
    zuvsim::SimulatedRmc expected;
    zuvkernel::configureRmc("sdr", expected);
    std::vector<std::vector<uint8_t>> records;
    for (size_t i = 0; i < expected.sdrCount(); ++i) records.push_back(expected.sdrRecord(i));

    ASSERT_EQ(records.size(), outcome.records.size());
    for (size_t i = 0; i < records.size(); ++i) EXPECT_EQ(records[i], outcome.records[i]) << "record " << i;
    EXPECT_EQ(1, outcome.infoCalls);
    EXPECT_EQ(2, outcome.reserveCalls);
    // Every record once, plus the three reads of the seventh before its reservation was lost.
    EXPECT_EQ(sdrTransactions(records) + 3, outcome.getSdrCalls);
    EXPECT_TRUE(outcome.exceptions.empty());
}

TEST(Extern, UnansweredRequestEndsInTimeoutCode) {
    zuvkernel::announce("fault-silent");
    zuvIPMI::SDR_REPOSITORY_INFO info{};
    try {
        service().getSDRRepositoryInfo(info);
        FAIL() << "an unanswered request succeeded";
    } catch (const zuvIPMI::IPMICommandFailureException& e) {
        EXPECT_EQ(0xC3, e.getCompletionCode());
        EXPECT_STREQ("IPMI command failed with: [195]", e.what());
    }
    // The channel is still good afterwards.
    zuvIPMI::DEVICE_ID_INFO id{};
    EXPECT_NO_THROW(service().getDeviceID(id));
    EXPECT_EQ(0x20, id.deviceId);
}

TEST(Extern, AnswerWithBadChecksumIsDroppedAndTimesOut) {
    zuvkernel::announce("fault-checksum");
    uint16_t reservation = 0;
    try {
        service().reserveSDRRepository(reservation);
        FAIL() << "an answer with a bad checksum reached the driver";
    } catch (const zuvIPMI::IPMICommandFailureException& e) {
        EXPECT_EQ(0xC3, e.getCompletionCode());
    }
    EXPECT_EQ(0, reservation);
}

TEST(Extern, ConnectionLostMidCommand) {
    zuvkernel::announce("fault-close");
    std::vector<int> results;
    service().deliverData("MPEventGen", zuvkernel::eventText(), [&](int r) { results.push_back(r); });
    // The blocks after the drop get QEMU's own code and no body; block commands don't look at
    // the code, so the transfer counts as done.
    EXPECT_EQ(std::vector<int>{0}, results);
    zuvkernel::announce("after-close");
    zuvIPMI::DEVICE_ID_INFO id{};
    EXPECT_NO_THROW(service().getDeviceID(id));
}
