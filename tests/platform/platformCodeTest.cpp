// The cached platform code, read from the SMBIOS family string, and its predicates.
#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/zuvPlatformCode.h"
#include "platformTestRig.h"

namespace {

using platformtest::installFamily;

class PlatformCodeTest : public ::testing::Test {
protected:
    void SetUp() override {
        platformtest::rig();
        storeCachedPlatformCode(-1);
    }
    void TearDown() override {
        storeCachedPlatformCode(-1);
        smbiosClose();
    }
};

TEST_F(PlatformCodeTest, PredicatesCompareTheCachedCode) {
    struct Case {
        int32_t code;
        bool p2, p4, p01, p24, p012, p0124;
    };
    const Case cases[] = {
        {0, false, false, true, false, true, true},     {1, false, false, true, false, true, true},
        {2, true, false, false, true, true, true},      {3, false, false, false, false, false, false},
        {4, false, true, false, true, false, true},     {99, false, false, false, false, false, false},
        {-7, false, false, false, false, false, false},
    };
    for (const Case& c : cases) {
        storeCachedPlatformCode(c.code);
        EXPECT_EQ(getCachedPlatformCode(), c.code);
        EXPECT_EQ(isPlatform2(), c.p2) << c.code;
        EXPECT_EQ(isPlatform4(), c.p4) << c.code;
        EXPECT_EQ(isPlatform0Or1(), c.p01) << c.code;
        EXPECT_EQ(isPlatform2Or4(), c.p24) << c.code;
        EXPECT_EQ(isPlatform0Or1Or2(), c.p012) << c.code;
        EXPECT_EQ(isPlatform0Or1Or2Or4(), c.p0124) << c.code;
    }
}

TEST_F(PlatformCodeTest, CodeComesFromTheFamilyAndIsKeptOnceKnown) {
    const std::pair<const char*, int32_t> cases[] = {
        {"PLATFAMILY00001", 0},
        {"PLATFAMILY00002", 1},
        {"PLATFAMILY00003", 2},
        {"PLATFAMILY00004", 4},
        {"PLATFAMILY00005", -1},
        {"platfamily00004", -1},
        {"", -1},
    };
    for (const auto& [family, code] : cases) {
        storeCachedPlatformCode(-1);
        installFamily(family);
        EXPECT_EQ(getCachedPlatformCode(), code) << family;
    }
    // Known: kept although the host now says otherwise.
    storeCachedPlatformCode(-1);
    installFamily("PLATFAMILY00004");
    EXPECT_TRUE(isPlatform4());
    installFamily("PLATFAMILY00001");
    EXPECT_EQ(getCachedPlatformCode(), 4);
    EXPECT_FALSE(isPlatform0Or1());
}

TEST_F(PlatformCodeTest, UnknownPlatformIsAskedAgainAtEachCall) {
    installFamily("NOT A KNOWN FAMILY");
    EXPECT_FALSE(isPlatform0Or1Or2Or4());
    EXPECT_EQ(getCachedPlatformCode(), -1);
    installFamily("PLATFAMILY00003");
    EXPECT_TRUE(isPlatform2());
    EXPECT_TRUE(isPlatform0Or1Or2Or4());
}

TEST_F(PlatformCodeTest, NoSmbiosDataThrowsAndCachesNothing) {
    platformtest::removeSmbios();
    try {
        getCachedPlatformCode();
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "Couldnot Fetch the Platform details");
    }
    EXPECT_THROW(isPlatform2(), std::runtime_error);
    installFamily("PLATFAMILY00002");
    EXPECT_EQ(getCachedPlatformCode(), 1);
}

}  // namespace
