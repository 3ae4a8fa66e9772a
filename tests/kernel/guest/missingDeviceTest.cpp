// Run while the module tree is out of reach: the service's driver-loading commands run but
// load nothing, the driver never creates /dev/ipmi0, and each construction ends in the
// connection failure after its one retry.
#include "guestSupport.h"
#include "ipmi/zuvIPMIService.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

TEST(MissingDevice, ConstructionFailsWithConnectionErrorEveryTime) {
    ASSERT_FALSE(zuvkernel::moduleLoaded("ipmi_si"));
    for (int attempt = 0; attempt < 2; ++attempt) {
        try {
            zuvIPMIService::getIPMIServiceInstance();
            FAIL() << "the service opened a device that does not exist";
        } catch (const std::runtime_error& e) {
            EXPECT_STREQ("IPMI - Connection - Failed", e.what());
        }
    }
    EXPECT_FALSE(zuvkernel::isCharacterDevice("/dev/ipmi0"));
    EXPECT_FALSE(zuvkernel::moduleLoaded("ipmi_msghandler"));
}
