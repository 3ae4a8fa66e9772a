// The manager singleton, in a process of its own: a failed construction leaves nothing built and
// the next call tries the whole construction again, the opening of the IPMI device included.
#include <gtest/gtest.h>

#include "delivery/zuvInBandComManager.h"
#include "deliveryTestRig.h"
#include "platform/SMBIOSVMware.h"

namespace {

// SMBIOS access whose platform look-up fails with something other than a runtime error.
struct BrokenSmbios : zuvSmbiosInterface {
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
    // IPMI device present, SMBIOS family, SMBIOS access (the host's when null), the failure.
    const std::tuple<bool, const char*, zuvSmbiosInterface*, const char*> cases[] = {
        {false, "PLATFAMILY00001", nullptr, "IPMI - Connection - Failed"},
        {true, "", nullptr, "Couldnot Fetch the Platform details"},
        {true, "PLATFAMILY00001", &broken, "broken"},
    };
    for (const auto& [device, family, access, failure] : cases) {
        rig.device.setDevicePresent(device);
        deliverytest::installSmbios(family);
        SMBIOSVMware smbios;
        zuvSmbiosInterface* used = access != nullptr ? access : &smbios;
        EXPECT_EQ(deliverytest::failureOf([used] { zuvInBandComManager::getInstance(used); }), failure);
    }
    EXPECT_EQ(zuvtest::logMessages(zuvtest::kMainLog, "ZUV_COM_MANAGER"),
              (deliverytest::Strings{
                  "Creating zuvInBandComManager: platformId [PLATFAMILY00001]",
                  "FAILURE in Initializing the Communication Channel [IPMI - Connection - Failed]",
                  "Creating zuvInBandComManager: platformId []",
                  "FAILURE in Initializing the Communication Channel [Couldnot Fetch the Platform details]",
                  "Creating zuvInBandComManager: platformId [PLATFAMILY00001]",
                  "FAILURE in Initializing the Communication Channel & Dispatcher Queue"}));

    zuvtest::clearLogs();
    deliverytest::installSmbios("PLATFAMILY00004");
    SMBIOSVMware smbios;
    zuvInBandComManager* manager = zuvInBandComManager::getInstance(&smbios);
    EXPECT_EQ(zuvInBandComManager::getInstance(&broken), manager) << "the first argument that works counts";
    EXPECT_EQ(zuvtest::logMessages(zuvtest::kMainLog, "P_DISPATCH_Q"),
              (deliverytest::Strings{"Creating dispatch queue: ZUV - IPMI Dispatch Queue", "Dispatch threads: 1"}));
    EXPECT_EQ(zuvtest::logMessages(zuvtest::kDebugLog, "ZUV_COM_MANAGER"),
              deliverytest::Strings{"Initialize zuvInBandComManager: protocol [0]"});
}
