// The event resolvers, and the record of platform services over SMBIOS images, a simulated RMC
// and a host whose kernel line the test decides; the cached platform code and its predicates.
#include <gtest/gtest.h>

#include "deliveryTestRig.h"
#include "fakeHostSystem.h"
#include "platform/SMBIOSVMware.h"
#include "platform/zuvPlatformCode.h"
#include "platform/zuvPlatformServices.h"

using Ids = std::vector<int32_t>;
using deliverytest::failureOf;
using deliverytest::installSmbios;

TEST(EventResolver, EachPlatformResolvesExactlyItsTableWithNumbersCutTo16Bits) {
    // The event id of each internal number from 0 to 50, 0 where there is none.
    uint32_t preSph[51] = {0,    0,    434,  435,  356,  359,  360,  397,  398,  835,  837,  836,  540,
                           538,  539,  383,  384,  385,  386,  388,  390,  1391, 681,  683,  1385, 1387,
                           1388, 680,  678,  1384, 1390, 708,  1138, 1139, 1150, 1501, 1152, 1148, 1151,
                           1179, 1180, 1181, 1182, 1183, 1337, 1338, 1441, 1442, 1443, 0,    0};
    uint32_t sph[51];
    std::copy(preSph, preSph + 51, sph);
    sph[35] = 1978, sph[46] = 1750, sph[47] = 1751, sph[48] = 1752, sph[49] = 1968, sph[50] = 1969;
    IELEventMap::IELEventPreSPH preSphResolver;
    IELEventMap::IELEventSPH sphResolver;
    for (auto [resolver, ids] : {std::make_pair<IELEventResolver*>(&preSphResolver, preSph),
                                 std::make_pair<IELEventResolver*>(&sphResolver, sph)}) {
        for (int number = -3; number <= 60; ++number) {
            std::string got;
            try {
                got = std::to_string(resolver->resolve(number + 65536 * (number % 3)));
            } catch (const std::runtime_error& e) {
                got = e.what();
            }
            const bool known = number >= 0 && number <= 50 && ids[number] != 0;
            EXPECT_EQ(got, known ? std::to_string(ids[number]) : "IEL Event Not Matching") << number;
        }
    }
    EXPECT_EQ(IELEventMap::preSPHEventTable().size(), 47u);
    EXPECT_EQ(IELEventMap::sphEventTable().size(), 49u);
}

// The answers of the predicates, in the order 2, 4, 0/1, 2/4, 0/1/2, 0/1/2/4.
static std::string predicates() {
    std::string answers;
    for (bool answer : {isPlatform2(), isPlatform4(), isPlatform0Or1(), isPlatform2Or4(), isPlatform0Or1Or2(),
                        isPlatform0Or1Or2Or4()})
        answers += answer ? "1" : "0";
    return answers;
}

TEST(PlatformServices, RecordAndCachedCodeFollowTheFamilyAndTheKernelLine) {
    vmwaretest::FakeHostSystem host;
    deliverytest::rig();
    zuvtest::clearLogs();
    // Family, kernel name and release; the platform code, the predicates' answers, the resource managers.
    const std::tuple<const char*, const char*, const char*, int32_t, const char*, Ids> cases[] = {
        {"PLATFAMILY00004", "VMkernel", "8.0.2", 4, "010101", {8, 1, 0, 2, 3, 4, 5}},
        {"PLATFAMILY00001", "VMkernel", "7.0.3", 0, "001011", {1, 0, 2, 3, 4, 5}},
        {"PLATFAMILY00002", "VMkernel", "9.0.0", 1, "001011", {8, 1, 0, 2, 3, 4, 5}},
        {"PLATFAMILY00003", "Linux VMkernel", "8.0", 2, "100111", {6, 99, 8, 8, 1, 0, 2, 3, 4, 5}},
        {"platfamily00004", "Linux Windows VMkernel 9.0", "8.0", -1, "000000", {6, 99, 8, 8, 8, 1, 0, 2, 3, 4, 5}},
        {"PLATFAMILY000010", "Windows", "8.0", -1, "000000", {8, 1, 0, 2, 3, 4, 5}},
        {"PLATFAMILY0000", "vmkernel linux windows", "8.0", -1, "000000", {1, 0, 2, 3, 4, 5}},
    };
    for (const auto& [family, kernel, release, code, answers, ids] : cases) {
        installSmbios(family);
        host.sysname = kernel;
        host.release = release;
        std::unique_ptr<zuvPlatformServices> services = getPlatformServices(1);
        EXPECT_EQ(services->getPlatform(), code) << family;
        EXPECT_EQ(services->getFamily() + ", " + services->getSmbios()->getManufacturer(),
                  family + std::string(", Zuv Test Systems"));
        EXPECT_EQ(services->getEventResolver()->resolve(46), code == 4 ? 1750u : 1441u) << "SPH only for 4";
        EXPECT_EQ(services->getResourceManagers(), ids) << kernel << " " << release;
        storeCachedPlatformCode(-1);
        EXPECT_EQ(std::to_string(getCachedPlatformCode()) + " " + predicates(), std::to_string(code) + " " + answers);
    }
    storeCachedPlatformCode(3);  // no predicate knows code 3
    EXPECT_EQ(predicates(), "000000");
    const auto first = getPlatformServices(1), again = getPlatformServices(1);  // singletons are shared
    EXPECT_TRUE(first->getInBandComManager() == again->getInBandComManager() && first->getInBandComManager());
    EXPECT_TRUE(first->getSDRCache() == again->getSDRCache() && first->getSDRCache());
    const auto lines = zuvtest::logMessages(zuvtest::kDebugLog, "ZUV_PLATFORM_SERVICE_BUILDER");
    EXPECT_EQ(deliverytest::Strings(lines.begin(), lines.begin() + 2),
              (deliverytest::Strings{"Building the Resource Manager List applicable to the Environment",
                                     "Target OS [VMkernel esx01 8.0.2 #1 SMP Release build-22380479 x86_64]"}));
    storeCachedPlatformCode(-1);  // unknown: asked again at each call
    EXPECT_FALSE(isPlatform0Or1Or2Or4());
    installSmbios("PLATFAMILY00002");
    EXPECT_TRUE(isPlatform0Or1());
    installSmbios("");  // known: kept without asking
    EXPECT_TRUE(isPlatform0Or1Or2());
    storeCachedPlatformCode(-1);
    EXPECT_EQ(failureOf(getCachedPlatformCode), "Couldnot Fetch the Platform details");
    EXPECT_EQ(failureOf([] { getPlatformServices(1); }), "Couldnot Fetch the Platform details");
    SMBIOSVMware none;
    EXPECT_THROW(none.getFamily(), smbios_exceptions::not_initialized);
    EXPECT_THROW(none.getManufacturer(), smbios_exceptions::not_initialized);
}
