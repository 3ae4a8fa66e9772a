// Against the simulated RMC behind QEMU's external BMC device; the host checks what the RMC
// put together from the blocks.
#include "externScenario.h"
#include "guestSupport.h"
#include "zuvProcess.h"

#include <gtest/gtest.h>

#include <vector>

TEST(Extern, BlockCommandDoorBellAndTimeoutPassTheKernel) {
    std::vector<int> results;
    zuvkernel::service().deliverData("MPEventGen", zuvkernel::externEventText(), [&](int r) { results.push_back(r); });
    EXPECT_EQ(std::vector<int>{0}, results);
    EXPECT_EQ(0xA0, zuvkernel::service().checkDoorBell(DoorBellIOFWU));

    zuvIPMI::SDR_REPOSITORY_INFO info{};  // unanswered: QEMU's own answer after 4 s
    EXPECT_EQ(zuvtest::thrown([&] { zuvkernel::service().getSDRRepositoryInfo(info); }),
              "zuvIPMI::IPMICommandFailureException: IPMI command failed with: [195]");
    // The channel still serves: the RMC's Get Device ID has all 15 bytes.
    zuvIPMI::DEVICE_ID_INFO id{};
    EXPECT_NO_THROW(zuvkernel::service().getDeviceID(id));
}
