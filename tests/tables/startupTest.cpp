// What the tables do before main: they are built, and no platform test ran while they were.

#include <gtest/gtest.h>

#include "platform/zuvPlatformCodeStore.h"
#include "platformCodeProbe.h"
#include "tables/zuvDeviceLocationRules.h"
#include "tables/zuvPciVendorNames.h"
#include "tables/zuvStorageControllers.h"

TEST(TablesStartup, TablesAreBuiltBeforeMainWithoutAskingThePlatform) {
    EXPECT_EQ(zuvtablestest::platformQueries(), 0);
    EXPECT_EQ(zuvCachedPlatformCodeValue.load(), -1);

    EXPECT_EQ(pciVendorNames.size(), pciVendorNameCount);
    EXPECT_EQ(zuvDL::geoIdExtractionRules.size(), 5u);
    for (const auto& record : zuvSASRM::storageControllers) EXPECT_TRUE(static_cast<bool>(record.isApplicable));
    for (const auto& rule : zuvDL::geoIdExtractionRules) {
        EXPECT_TRUE(static_cast<bool>(rule.isApplicable));
        EXPECT_EQ(rule.compiledExpression.mark_count(), 0u);
        EXPECT_EQ(rule.compiledExpression.flags(), std::regex::ECMAScript);
    }
    // Still nothing asked after looking at the tables.
    EXPECT_EQ(zuvtablestest::platformQueries(), 0);
}
