// The two event resolvers and their tables.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <stdexcept>

#include "platform/IELEventResolver.h"

namespace {

// The ids both platforms share, by runs of internal numbers.
std::map<int, uint32_t> commonEvents() {
    const std::vector<std::pair<int, std::vector<uint32_t>>> runs = {
        {2, {434, 435, 356, 359, 360, 397, 398}},
        {9, {835, 837, 836}},
        {12, {540, 538, 539}},
        {15, {383, 384, 385, 386, 388, 390, 1391}},
        {22, {681, 683, 1385, 1387, 1388}},
        {27, {680, 678, 1384, 1390}},
        {31, {708}},
        {32, {1138, 1139, 1150}},
        {36, {1152, 1148, 1151}},
        {39, {1179, 1180, 1181, 1182, 1183}},
        {44, {1337, 1338}},
    };
    std::map<int, uint32_t> events;
    for (const auto& [first, ids] : runs)
        for (size_t i = 0; i < ids.size(); ++i) events[first + static_cast<int>(i)] = ids[i];
    return events;
}

void expectNotMatching(IELEventResolver& resolver, int number) {
    try {
        resolver.resolve(number);
        ADD_FAILURE() << number << " resolved";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "IEL Event Not Matching") << number;
    }
}

TEST(EventResolverTest, EachPlatformResolvesExactlyItsTable) {
    std::map<int, uint32_t> preSph = commonEvents();
    std::map<int, uint32_t> sph = commonEvents();
    preSph.insert({{35, 1501}, {46, 1441}, {47, 1442}, {48, 1443}});
    sph.insert({{35, 1978}, {46, 1750}, {47, 1751}, {48, 1752}, {49, 1968}, {50, 1969}});
    ASSERT_EQ(preSph.size(), 47u);
    ASSERT_EQ(sph.size(), 49u);

    const std::pair<std::unique_ptr<IELEventResolver>, std::map<int, uint32_t>*> cases[] = {
        {std::make_unique<IELEventMap::IELEventPreSPH>(), &preSph},
        {std::make_unique<IELEventMap::IELEventSPH>(), &sph},
    };
    for (const auto& [resolver, expected] : cases) {
        for (int number = -3; number <= 60; ++number) {
            const auto found = expected->find(number);
            if (found == expected->end()) {
                expectNotMatching(*resolver, number);
            } else {
                EXPECT_EQ(resolver->resolve(number), found->second) << number;
            }
        }
    }
    EXPECT_EQ(IELEventMap::preSPHEventTable().size(), 47u);
    EXPECT_EQ(IELEventMap::sphEventTable().size(), 49u);
}

TEST(EventResolverTest, NumbersAreCutTo16BitsForTheLookUp) {
    IELEventMap::IELEventPreSPH preSph;
    IELEventMap::IELEventSPH sph;
    EXPECT_EQ(preSph.resolve(31 + 65536), 708u);
    EXPECT_EQ(sph.resolve(49 - 65536 * 3), 1968u);
    expectNotMatching(preSph, 65536 + 1);
    expectNotMatching(sph, -65536);
}

TEST(EventResolverTest, ResolverIsDestroyedThroughItsBase) {
    std::unique_ptr<IELEventResolver> resolver(new IELEventMap::IELEventSPH());
    EXPECT_EQ(resolver->resolve(46), 1750u);
    resolver.reset();  // the address sanitizer build checks the map goes with it
}

}  // namespace
