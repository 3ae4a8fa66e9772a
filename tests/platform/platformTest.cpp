// The event resolvers, the resource managers by kernel line, the builder and its record over
// SMBIOS images and a simulated RMC, and the cached platform code with its predicates.
#include <gtest/gtest.h>

#include <map>
#include <stdexcept>

#include "deliveryTestRig.h"
#include "fakeHostSystem.h"
#include "platform/zuvPlatformCode.h"
#include "platform/zuvPlatformServiceBuilder.h"
#include "platform/zuvResourceManagerList.h"

using Ids = std::vector<int32_t>;
using deliverytest::installSmbios;

namespace {

// What a call gives: its value, or the text of the runtime error it throws.
template <typename Call>
std::string outcome(Call call) {
    try {
        return std::to_string(call());
    } catch (const std::runtime_error& e) {
        return e.what();
    }
}

}  // namespace

TEST(EventResolver, EachPlatformResolvesExactlyItsTableWithNumbersCutTo16Bits) {
    const std::pair<int, std::vector<uint32_t>> shared[] = {{2, {434, 435, 356, 359, 360, 397, 398}},
                                                            {9, {835, 837, 836}},
                                                            {12, {540, 538, 539}},
                                                            {15, {383, 384, 385, 386, 388, 390, 1391}},
                                                            {22, {681, 683, 1385, 1387, 1388}},
                                                            {27, {680, 678, 1384, 1390}},
                                                            {31, {708}},
                                                            {32, {1138, 1139, 1150}},
                                                            {36, {1152, 1148, 1151}},
                                                            {39, {1179, 1180, 1181, 1182, 1183}},
                                                            {44, {1337, 1338}}};
    std::map<int, uint32_t> preSph = {{35, 1501}, {46, 1441}, {47, 1442}, {48, 1443}};
    std::map<int, uint32_t> sph = {{35, 1978}, {46, 1750}, {47, 1751}, {48, 1752}, {49, 1968}, {50, 1969}};
    for (const auto& [first, ids] : shared)
        for (size_t i = 0; i < ids.size(); ++i) preSph[first + int(i)] = sph[first + int(i)] = ids[i];
    IELEventMap::IELEventPreSPH preSphResolver;
    IELEventMap::IELEventSPH sphResolver;
    for (const auto& [resolver, expected] : {std::make_pair<IELEventResolver*>(&preSphResolver, &preSph),
                                             std::make_pair<IELEventResolver*>(&sphResolver, &sph)}) {
        for (int number = -3; number <= 60; ++number) {
            const auto found = expected->find(number);
            EXPECT_EQ(outcome([&, number] { return resolver->resolve(number + 65536 * (number % 3)); }),
                      found == expected->end() ? "IEL Event Not Matching" : std::to_string(found->second))
                << number;
        }
    }
    EXPECT_EQ(IELEventMap::preSPHEventTable().size() * 100 + IELEventMap::sphEventTable().size(), 4749u);
}

TEST(ResourceManagerList, IdsFollowTheWordsOfTheKernelLine) {
    const std::pair<const char*, Ids> cases[] = {
        {"VMkernel esx01 8.0.2 #1 SMP Release build-22380479 x86_64", {8, 1, 0, 2, 3, 4, 5}},
        {"VMkernel esx01 9.0.0 #1 SMP Release build-24755229 x86_64", {8, 1, 0, 2, 3, 4, 5}},
        {"VMkernel esx01 7.0.3 #1 SMP Release build-21930508 x86_64", {1, 0, 2, 3, 4, 5}},
        {"VMkernel esx01 9.0.0 #1 SMP Release build-8.0 x86_64", {8, 1, 0, 2, 3, 4, 5}},
        {"Linux VMkernel 8.0", {6, 99, 8, 8, 1, 0, 2, 3, 4, 5}},
        {"Linux Windows VMkernel 9.0", {6, 99, 8, 8, 8, 1, 0, 2, 3, 4, 5}},
        {"Windows", {8, 1, 0, 2, 3, 4, 5}},
        {"esx01 8.0.2 without the kernel name", {1, 0, 2, 3, 4, 5}},
        {"vmkernel 8.0 linux windows", {1, 0, 2, 3, 4, 5}},
    };
    for (const auto& [line, ids] : cases) EXPECT_EQ(zuvResourceManagersForKernel(line), ids) << line;
}

TEST(PlatformServiceBuilder, DirectorRunsTheSlotsInOrderAndHandsOverTheRecord) {
    struct RecordingBuilder : Builder {
        void buildInBandComManager() override { calls += "manager "; }
        void buildSmbios() override { calls += "smbios "; }
        void buildReserved() override { calls += "reserved "; }
        void buildEventResolver() override { calls += "resolver "; }
        void buildResourceManagerList() override {
            calls += "resources ";
            services->resourceManagers = {1, 2};
        }
        void buildSDRCache() override { calls += "sdr"; }
        std::string calls;
    } builder;
    zuvDirectPlatformServiceBuild(builder);
    EXPECT_EQ(builder.calls, "smbios manager reserved resolver resources sdr");
    EXPECT_EQ(builder.takeServices()->getResourceManagers(), (Ids{1, 2}));
    EXPECT_EQ(builder.takeServices()->getResourceManagers(), Ids{}) << "the builder goes on with a fresh record";
}

TEST(PlatformServices, RecordFollowsTheFamilyAndTheKernelLine) {
    vmwaretest::FakeHostSystem host;
    deliverytest::rig();
    zuvtest::clearLogs();
    const std::tuple<const char*, const char*, int32_t, uint32_t, Ids> cases[] = {
        {"PLATFAMILY00004", "8.0.2", 4, 1750, {8, 1, 0, 2, 3, 4, 5}},
        {"PLATFAMILY00001", "7.0.3", 0, 1441, {1, 0, 2, 3, 4, 5}},
        {"PLATFAMILY00003", "9.0.0", 2, 1441, {8, 1, 0, 2, 3, 4, 5}},
        {"SOMETHING ELSE", "8.0.2", -1, 1441, {8, 1, 0, 2, 3, 4, 5}},
    };
    std::unique_ptr<zuvPlatformServices> first;
    for (const auto& [family, release, code, id46, ids] : cases) {
        installSmbios(family);
        host.release = release;
        std::unique_ptr<zuvPlatformServices> services = getPlatformServices(1);
        EXPECT_EQ(services->getPlatform(), code) << family;
        EXPECT_EQ(services->getFamily(), family);
        EXPECT_EQ(services->getEventResolver()->resolve(46), id46) << family;
        EXPECT_EQ(services->getResourceManagers(), ids) << release;
        if (!first) first = std::move(services);
    }
    auto again = getPlatformServices(1);
    EXPECT_TRUE(first->getInBandComManager() != nullptr && first->getSDRCache() != nullptr);
    EXPECT_EQ(first->getInBandComManager(), again->getInBandComManager()) << "singletons are shared";
    EXPECT_EQ(first->getSDRCache(), again->getSDRCache());
    EXPECT_NE(first->getEventResolver(), again->getEventResolver()) << "the record's own parts are new";
    again.reset();
    EXPECT_EQ(first->getEventResolver()->resolve(49), 1968u);
    const auto lines = zuvtest::logMessages(zuvtest::kDebugLog, "ZUV_PLATFORM_SERVICE_BUILDER");
    EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 2),
              (std::vector<std::string>{"Building the Resource Manager List applicable to the Environment",
                                        "Target OS [VMkernel esx01 8.0.2 #1 SMP Release build-22380479 x86_64]"}));
    host.unameError = EFAULT;  // the kernel line is one blank: only the fixed ids
    EXPECT_EQ(getPlatformServices(1)->getResourceManagers(), (Ids{1, 0, 2, 3, 4, 5}));
    installSmbios("");
    EXPECT_EQ(outcome([] { return getPlatformServices(1)->getPlatform(); }), "Couldnot Fetch the Platform details");
}

TEST(PlatformCode, CachedOnceKnownAskedAgainWhileUnknownAndTestedByThePredicates) {
    // The predicates' answers, in the order 2, 4, 0/1, 2/4, 0/1/2, 0/1/2/4.
    const std::pair<int32_t, const char*> cases[] = {{0, "001011"}, {1, "001011"},  {2, "100111"}, {3, "000000"},
                                                     {4, "010101"}, {99, "000000"}, {-7, "000000"}};
    for (const auto& [code, answers] : cases) {
        storeCachedPlatformCode(code);
        std::string got;
        for (bool answer : {isPlatform2(), isPlatform4(), isPlatform0Or1(), isPlatform2Or4(), isPlatform0Or1Or2(),
                            isPlatform0Or1Or2Or4()})
            got += answer ? "1" : "0";
        EXPECT_EQ(got, answers) << code;
    }
    storeCachedPlatformCode(-1);
    installSmbios("");
    EXPECT_EQ(outcome(getCachedPlatformCode), "Couldnot Fetch the Platform details");
    installSmbios("NOT A KNOWN FAMILY");
    EXPECT_FALSE(isPlatform0Or1Or2Or4());
    installSmbios("PLATFAMILY00002");
    EXPECT_TRUE(isPlatform0Or1()) << "unknown is asked again";
    installSmbios("PLATFAMILY00004");
    EXPECT_EQ(getCachedPlatformCode(), 1) << "known is kept";
    installSmbios("");
    EXPECT_TRUE(isPlatform0Or1Or2());
    storeCachedPlatformCode(-1);
}
