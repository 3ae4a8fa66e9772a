// The guest boots with no IPMI module loaded: the service's first open fails, its own
// driver-loading commands run for real, and the second open finds the device they created.
#include "guestSupport.h"
#include "ipmi/zuvIPMIService.h"

#include <gtest/gtest.h>

TEST(DriverLoading, FirstUseLoadsTheDriversAndOpensTheirDevice) {
    for (const char* module : {"ipmi_msghandler", "ipmi_si", "ipmi_devintf"}) {
        ASSERT_FALSE(zuvkernel::moduleLoaded(module)) << module << " loaded before the service ran";
    }
    ASSERT_FALSE(zuvkernel::isCharacterDevice("/dev/ipmi0"));

    ASSERT_NE(nullptr, zuvIPMIService::getIPMIServiceInstance());

    for (const char* module : {"ipmi_msghandler", "ipmi_si", "ipmi_devintf"}) {
        EXPECT_TRUE(zuvkernel::moduleLoaded(module)) << module;
    }
    EXPECT_TRUE(zuvkernel::isCharacterDevice("/dev/ipmi0"));
    // The same object through both accessors.
    EXPECT_EQ(
        static_cast<zuvInbandComInterface*>(static_cast<zuvIPMIService*>(zuvIPMIService::getIPMIServiceInstance())),
        zuvIPMIService::getInstance());
}
