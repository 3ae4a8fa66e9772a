// The director's order, the record's ownership, and the resource managers by kernel line.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/zuvPlatformServiceBuilder.h"
#include "platform/zuvResourceManagerList.h"

namespace {

TEST(ResourceManagerListTest, IdsFollowTheWordsOfTheKernelLine) {
    using Ids = std::vector<int32_t>;
    const std::pair<const char*, Ids> cases[] = {
        {"VMkernel esx01 8.0.2 #1 SMP Release build-22380479 x86_64", {8, 1, 0, 2, 3, 4, 5}},
        {"VMkernel esx01 9.0.0 #1 SMP Release build-24755229 x86_64", {8, 1, 0, 2, 3, 4, 5}},
        {"VMkernel esx01 7.0.3 #1 SMP Release build-21930508 x86_64", {1, 0, 2, 3, 4, 5}},
        {"VMkernel esx01 9.0.0 #1 SMP Release build-8.0 x86_64", {8, 1, 0, 2, 3, 4, 5}},
        {"Linux VMkernel 8.0", {6, 99, 8, 8, 1, 0, 2, 3, 4, 5}},
        {"Linux host 6.1.0-18-amd64 #1 SMP x86_64", {6, 99, 8, 1, 0, 2, 3, 4, 5}},
        {"Windows", {8, 1, 0, 2, 3, 4, 5}},
        {"Linux Windows VMkernel 9.0", {6, 99, 8, 8, 8, 1, 0, 2, 3, 4, 5}},
        {"esx01 8.0.2 without the kernel name", {1, 0, 2, 3, 4, 5}},
        {"vmkernel 8.0 linux windows", {1, 0, 2, 3, 4, 5}},  // the words are matched with their case
        {" ", {1, 0, 2, 3, 4, 5}},
        {"", {1, 0, 2, 3, 4, 5}},
    };
    for (const auto& [line, ids] : cases) EXPECT_EQ(zuvResourceManagersForKernel(line), ids) << line;
}

// A builder that records the order in which the director calls its slots.
class RecordingBuilder : public Builder {
public:
    void buildInBandComManager() override { calls.push_back("manager"); }
    void buildSmbios() override { calls.push_back("smbios"); }
    void buildReserved() override { calls.push_back("reserved"); }
    void buildEventResolver() override { calls.push_back("resolver"); }
    void buildResourceManagerList() override {
        calls.push_back("resources");
        services->resourceManagers = {1, 2};
    }
    void buildSDRCache() override { calls.push_back("sdr"); }
    std::vector<std::string> calls;
};

TEST(PlatformServiceBuilderTest, DirectorRunsTheSlotsInOrderAndHandsOverTheRecord) {
    RecordingBuilder builder;
    zuvDirectPlatformServiceBuild(builder);
    EXPECT_EQ(builder.calls,
              (std::vector<std::string>{"smbios", "manager", "reserved", "resolver", "resources", "sdr"}));
    auto first = builder.takeServices();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->getResourceManagers(), (std::vector<int32_t>{1, 2}));
    auto second = builder.takeServices();
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first.get(), second.get());
    EXPECT_TRUE(second->getResourceManagers().empty());
    EXPECT_EQ(second->getSmbios(), nullptr);
}

// SMBIOS access that counts its destruction.
class CountingSmbios : public zuvSmbiosInterface {
public:
    explicit CountingSmbios(int* destroyed) : destroyed(destroyed) {}
    ~CountingSmbios() override { ++*destroyed; }
    std::string getFamily() override { return "PLATFAMILY00004"; }
    std::string getManufacturer() override { return "Zuv"; }
    int32_t getPlatform() override { return 4; }
    int getSmbiosTable(int, void** table, unsigned* count) override {
        *table = nullptr;
        *count = 0;
        return -1;
    }

private:
    int* destroyed;
};

TEST(PlatformServiceBuilderTest, RecordOwnsSmbiosAndResolverAndForwardsToSmbios) {
    int destroyed = 0;
    {
        zuvPlatformServices services;
        services.smbios = new CountingSmbios(&destroyed);
        services.eventResolver = new IELEventMap::IELEventSPH();
        EXPECT_EQ(services.getPlatform(), 4);
        EXPECT_EQ(services.getFamily(), "PLATFAMILY00004");
        EXPECT_EQ(services.getEventResolver()->resolve(50), 1969u);
    }
    EXPECT_EQ(destroyed, 1);
}

}  // namespace
