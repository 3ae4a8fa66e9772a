// The manager singleton: a failed construction leaves nothing built and the next call tries
// the whole construction again, the opening of the IPMI device included. Its own process,
// because the IPMI service and the manager are built once per process.
#include <gtest/gtest.h>

#include <stdexcept>

#include "delivery/zuvInBandComManager.h"
#include "deliveryTestRig.h"
#include "platform/SMBIOSVMware.h"

namespace {

// SMBIOS access whose platform look-up fails with something other than a runtime error.
class BrokenSmbios : public zuvSmbiosInterface {
public:
    std::string getFamily() override { return "PLATFAMILY00001"; }
    std::string getManufacturer() override { return ""; }
    int32_t getPlatform() override { throw std::logic_error("broken"); }
    int getSmbiosTable(int, void**, unsigned*) override { return -1; }
};

}  // namespace

TEST(ManagerStart, SingletonIsBuiltAgainAfterEachFailedConstruction) {
    deliverytest::Rig& rig = deliverytest::rig();
    zuvtest::clearLogs();
    BrokenSmbios broken;
    // No IPMI device; no SMBIOS data; some other failure.
    const std::tuple<bool, const char*, zuvSmbiosInterface*, const char*> cases[] = {
        {false, "PLATFAMILY00001", nullptr, "IPMI - Connection - Failed"},
        {true, "", nullptr, "Couldnot Fetch the Platform details"},
        {true, "PLATFAMILY00001", &broken, "broken"},
    };
    for (const auto& [device, family, smbios, failure] : cases) {
        rig.device.setDevicePresent(device);
        deliverytest::installSmbios(family);
        SMBIOSVMware vmware;
        try {
            zuvInBandComManager::getInstance(smbios != nullptr ? smbios : &vmware);
            ADD_FAILURE() << "built";
        } catch (const std::exception& e) {
            EXPECT_STREQ(e.what(), failure);
            EXPECT_EQ(dynamic_cast<const std::runtime_error*>(&e) != nullptr, smbios == nullptr) << failure;
        }
    }
    EXPECT_EQ(zuvtest::logMessages(zuvtest::kMainLog, "ZUV_COM_MANAGER"),
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
    EXPECT_EQ(zuvInBandComManager::getInstance(&broken), manager);
    EXPECT_TRUE(zuvtest::logHolds(zuvtest::kMainLog, "Creating zuvInBandComManager: platformId [PLATFAMILY00004]"));
    EXPECT_TRUE(zuvtest::logHolds(zuvtest::kMainLog, "Creating dispatch queue: ZUV - IPMI Dispatch Queue"));
    EXPECT_TRUE(zuvtest::logHolds(zuvtest::kMainLog, "Dispatch threads: 1"));
    deliverytest::Recorder results;
    manager->sendUtilization("{}", deliverytest::recordInto(results, 1));
    EXPECT_EQ(results.waitFor(1), std::vector<int>{10});
    EXPECT_EQ(rig.rmc.commands().at(0).name, "WriteTelemetry");
}
