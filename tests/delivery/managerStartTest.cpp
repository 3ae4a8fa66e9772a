// The manager singleton: a failed construction leaves nothing built and the next call tries
// the whole construction again, the opening of the IPMI device included. Its own process,
// because the IPMI service and the manager are built once per process.
#include <gtest/gtest.h>

#include <stdexcept>

#include "delivery/zuvInBandComManager.h"
#include "managerTestRig.h"
#include "platform/SMBIOSVMware.h"

using deliverytest::kMainLog;

namespace {

// SMBIOS access whose platform look-up fails with something other than a runtime error.
class BrokenSmbios : public zuvSmbiosInterface {
public:
    std::string getFamily() override { return "PLATFAMILY00001"; }
    std::string getManufacturer() override { return "Maker"; }
    int32_t getPlatform() override { throw std::logic_error("broken"); }
    int getSmbiosTable(int, void**, unsigned*) override { return -1; }
};

std::string failureOf(const std::function<void()>& attempt) {
    try {
        attempt();
    } catch (const std::runtime_error& e) {
        return std::string("runtime_error: ") + e.what();
    } catch (const std::exception& e) {
        return std::string("exception: ") + e.what();
    }
    return "none";
}

}  // namespace

TEST(ManagerStart, SingletonIsBuiltAgainAfterEachFailedConstruction) {
    deliverytest::ManagerRig& rig = deliverytest::managerRig();
    deliverytest::clearLogs();

    // No IPMI device.
    rig.device.setDevicePresent(false);
    deliverytest::installSmbios("PLATFAMILY00001");
    {
        SMBIOSVMware smbios;
        EXPECT_EQ(failureOf([&] { zuvInBandComManager::getInstance(&smbios); }),
                  "runtime_error: IPMI - Connection - Failed");
    }
    rig.device.setDevicePresent(true);

    // No SMBIOS data: the platform can't be read.
    deliverytest::installSmbios("");
    {
        SMBIOSVMware smbios;
        EXPECT_EQ(failureOf([&] { zuvInBandComManager::getInstance(&smbios); }),
                  "runtime_error: Couldnot Fetch the Platform details");
    }

    // Some other failure.
    BrokenSmbios broken;
    EXPECT_EQ(failureOf([&] { zuvInBandComManager::getInstance(&broken); }), "exception: broken");

    EXPECT_EQ(deliverytest::messages(kMainLog, "ZUV_COM_MANAGER"),
              (std::vector<std::string>{
                  "Creating zuvInBandComManager: platformId [PLATFAMILY00001]",
                  "FAILURE in Initializing the Communication Channel [IPMI - Connection - Failed]",
                  "Creating zuvInBandComManager: platformId []",
                  "FAILURE in Initializing the Communication Channel [Couldnot Fetch the Platform details]",
                  "Creating zuvInBandComManager: platformId [PLATFAMILY00001]",
                  "FAILURE in Initializing the Communication Channel & Dispatcher Queue"}));

    // Now it works, and the first successful argument is the one that counts.
    deliverytest::installSmbios("PLATFAMILY00004");
    SMBIOSVMware smbios;
    zuvInBandComManager* manager = zuvInBandComManager::getInstance(&smbios);
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(zuvInBandComManager::getInstance(&broken), manager);
    EXPECT_TRUE(deliverytest::logHolds(kMainLog, "Creating dispatch queue: ZUV - IPMI Dispatch Queue"));
    EXPECT_TRUE(deliverytest::logHolds(kMainLog, "Creating zuvInBandComManager: platformId [PLATFAMILY00004]"));

    deliverytest::Recorder results;
    manager->initializeMsgHeader(zuvMsgHeader{"esx01", "7.0.3", 104, "192.0.2.10"});
    manager->sendEvent(deliverytest::sampleEvent(708, "Test"), deliverytest::recordInto(results, 1));
    EXPECT_EQ(results.waitFor(1), std::vector<int>{10});
    ASSERT_EQ(rig.rmc.commands().size(), 1u);
    EXPECT_EQ(rig.rmc.commands()[0].name, "MPEventGen");
}
