// getPlatformServices over generated SMBIOS images, a simulated RMC and a host whose kernel
// line the test decides.
#include <gtest/gtest.h>

#include <stdexcept>

#include "fakeHostSystem.h"
#include "platform/zuvPlatformCode.h"
#include "platform/zuvPlatformServices.h"
#include "platformTestRig.h"

namespace {

class PlatformServicesTest : public ::testing::Test {
protected:
    void SetUp() override {
        platformtest::rig();
        vmwaretest::clearLogs();
    }
    void TearDown() override { smbiosClose(); }
    vmwaretest::FakeHostSystem host;
};

TEST_F(PlatformServicesTest, ResolverFollowsThePlatformCodeOfTheFamily) {
    struct Case {
        const char* family;
        int32_t code;
        bool sph;
    };
    const Case cases[] = {
        {"PLATFAMILY00004", 4, true},  {"PLATFAMILY00001", 0, false}, {"PLATFAMILY00002", 1, false},
        {"PLATFAMILY00003", 2, false}, {"SOMETHING ELSE", -1, false},
    };
    for (const Case& c : cases) {
        platformtest::installFamily(c.family);
        std::unique_ptr<zuvPlatformServices> services = getPlatformServices(1);
        ASSERT_NE(services, nullptr);
        EXPECT_EQ(services->getPlatform(), c.code) << c.family;
        EXPECT_EQ(services->getFamily(), c.family);
        ASSERT_NE(services->getSmbios(), nullptr);
        IELEventResolver* resolver = services->getEventResolver();
        ASSERT_NE(resolver, nullptr);
        EXPECT_EQ(dynamic_cast<IELEventMap::IELEventSPH*>(resolver) != nullptr, c.sph) << c.family;
        EXPECT_EQ(dynamic_cast<IELEventMap::IELEventPreSPH*>(resolver) != nullptr, !c.sph) << c.family;
        EXPECT_EQ(resolver->resolve(31), 708u);
        EXPECT_EQ(resolver->resolve(46), c.sph ? 1750u : 1441u);
    }
}

TEST_F(PlatformServicesTest, ResourceManagersFollowTheKernelLineOfTheHost) {
    platformtest::installFamily("PLATFAMILY00001");
    using Ids = std::vector<int32_t>;
    struct Case {
        const char* sysname;
        const char* release;
        Ids ids;
    };
    const Case cases[] = {
        {"VMkernel", "8.0.2", {8, 1, 0, 2, 3, 4, 5}},
        {"VMkernel", "9.0.0", {8, 1, 0, 2, 3, 4, 5}},
        {"VMkernel", "7.0.3", {1, 0, 2, 3, 4, 5}},
        {"Linux", "6.1.0", {6, 99, 8, 1, 0, 2, 3, 4, 5}},
    };
    host.version = "#1 SMP Release build-22380479";
    for (const Case& c : cases) {
        host.sysname = c.sysname;
        host.release = c.release;
        EXPECT_EQ(getPlatformServices(1)->getResourceManagers(), c.ids) << c.sysname << " " << c.release;
    }
    const auto lines = vmwaretest::messages(vmwaretest::kDebugLog, "ZUV_PLATFORM_SERVICE_BUILDER");
    EXPECT_TRUE(vmwaretest::hasMessage(lines, "Building the Resource Manager List applicable to the Environment"));
    EXPECT_TRUE(vmwaretest::hasMessage(lines, "Target OS [Linux esx01 6.1.0 #1 SMP Release build-22380479 x86_64]"));

    // uname fails: the kernel line is one blank, and only the fixed ids remain.
    host.unameError = EFAULT;
    EXPECT_EQ(getPlatformServices(1)->getResourceManagers(), (Ids{1, 0, 2, 3, 4, 5}));
}

TEST_F(PlatformServicesTest, SingletonsAreSharedAndOwnedPartsAreNew) {
    platformtest::installFamily("PLATFAMILY00004");
    auto first = getPlatformServices(1);
    auto second = getPlatformServices(1);
    ASSERT_NE(first->getInBandComManager(), nullptr);
    ASSERT_NE(first->getSDRCache(), nullptr);
    EXPECT_EQ(first->getInBandComManager(), second->getInBandComManager());
    EXPECT_EQ(first->getSDRCache(), second->getSDRCache());
    EXPECT_NE(first->getSmbios(), second->getSmbios());
    EXPECT_NE(first->getEventResolver(), second->getEventResolver());
    first.reset();  // the second record's parts stay usable
    EXPECT_EQ(second->getPlatform(), 4);
    EXPECT_EQ(second->getEventResolver()->resolve(49), 1968u);
}

TEST_F(PlatformServicesTest, NoSmbiosDataGivesNoRecord) {
    platformtest::removeSmbios();
    try {
        getPlatformServices(1);
        ADD_FAILURE() << "a record without SMBIOS data";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "Couldnot Fetch the Platform details");
    }
    // Once the data is there, records are built again.
    platformtest::installFamily("PLATFAMILY00003");
    EXPECT_EQ(getPlatformServices(1)->getPlatform(), 2);
}

TEST_F(PlatformServicesTest, CachedCodeIsTakenFromABuiltRecordOnce) {
    storeCachedPlatformCode(-1);
    platformtest::installFamily("PLATFAMILY00004");
    EXPECT_EQ(getCachedPlatformCode(), 4);
    EXPECT_TRUE(isPlatform2Or4());
    platformtest::removeSmbios();  // no further build is needed once the code is known
    EXPECT_TRUE(isPlatform4());
    storeCachedPlatformCode(-1);
}

}  // namespace
