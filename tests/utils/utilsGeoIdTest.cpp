#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/zuvPlatformCode.h"
#include "utils/zuvGeoIdExpressions.h"
#include "utils/zuvUtils.h"
#include "utilsTestLog.h"
#include "zuvChild.h"

using utilstest::countMessage;
using utilstest::debugMessages;
using utilstest::hasMessage;
using utilstest::mainMessagesAt;

namespace {

std::string join(const std::vector<std::string>& fields) {
    std::string text;
    for (const std::string& f : fields) text += (text.empty() ? "" : ",") + f;
    return text;
}

// The decoder is compiled once per process, so each platform is played in a child.
std::string decodeOnPlatform(int32_t platform, const std::vector<std::string>& addresses) {
    return zuvtest::inChild([&] {
               storeCachedPlatformCode(platform);
               zuvUtils::geoIdLocationMap = {{"0000:01:00.0", "r001u02p3i04"},
                                             {"0000:02:00.0", "r001i02s03"},
                                             {"0000:03:00.0", "r001i02s03x"},
                                             {"0000:04:00.0", "r001u02p3o4"}};
               std::string out;
               for (const std::string& address : addresses) out += "[" + join(zuvUtils().decodeGeoId(address)) + "]";
               return out + (zuvUtils::geoIdRegexReady ? " ready" : " not-ready");
           })
        .text;
}

}  // namespace

class UtilsGeoId : public ::testing::Test {
protected:
    void SetUp() override {
        utilstest::startLogging();
        utilstest::clearLogs();
        zuvUtils::geoIdLocationMap.clear();
    }
    void TearDown() override { zuvUtils::geoIdLocationMap.clear(); }
    zuvUtils utils;
};

TEST_F(UtilsGeoId, DesignationGivesTheFirstType2GeoIdAtWordBoundaries) {
    struct Case {
        const char *designation, *expected;
    } cases[] = {
        {"PCIe Slot r001u02p3i04 x8", "r001u02p3i04"},
        {"r001u02p3i04", "r001u02p3i04"},
        {"Slot r001u02p3i04a", ""},  // boundary fails behind
        {"Slot _r001u02p3i04", ""},  // boundary fails in front
        {"A r001u02p3i04 B r999u99p9i99", "r001u02p3i04"},
        {"B r999u99p9i99,r001u02p3i04", "r999u99p9i99"},
        {"Slot r001i02s03", ""},  // type 1 isn't looked for
        {"Slot r001u02p3x4y05", ""},
        {"", ""},
    };
    for (const Case& c : cases) EXPECT_EQ(utils.getGeoIdFromDesignation(c.designation), c.expected) << c.designation;
    EXPECT_TRUE(hasMessage(debugMessages(), "Error detecting GeoId : No match"));
}

TEST_F(UtilsGeoId, LookUpGivesNotAvailableForUnknownAddresses) {
    EXPECT_EQ(utils.getGeoIdForPciAddress("0000:01:00.0"), "NotAvailable");
    EXPECT_TRUE(utils.decodeGeoId("0000:01:00.0").empty());
    EXPECT_TRUE(hasMessage(debugMessages(), "GeoID not available for PCI address [0000:01:00.0]."));
    zuvUtils::geoIdLocationMap["0000:01:00.0"] = "r001u02p3i04";
    EXPECT_EQ(utils.getGeoIdForPciAddress("0000:01:00.0"), "r001u02p3i04");
    EXPECT_EQ(utils.getGeoIdForPciAddress("0000:01:00.1"), "NotAvailable");
    EXPECT_EQ(utils.getGeoIdForPciAddress("01:00.0"), "NotAvailable");
}

TEST_F(UtilsGeoId, DecodingFollowsThePlatformsExpression) {
    const std::vector<std::string> all = {"0000:01:00.0", "0000:02:00.0", "0000:03:00.0", "0000:04:00.0"};
    EXPECT_EQ(decodeOnPlatform(2, all), "[001,02,3,04][][][] ready");
    EXPECT_EQ(decodeOnPlatform(1, all), "[][001,02,03][][] ready");
    EXPECT_EQ(decodeOnPlatform(0, all), "[][001,02,03][][] ready");
    bool mismatchLogged = false;
    for (const std::string& m : debugMessages())
        mismatchLogged |= m.rfind("Error decoding GeoID [r001i02s03x]: [1] - [", 0) == 0;
    EXPECT_TRUE(mismatchLogged);
}

TEST_F(UtilsGeoId, PlatformWithoutDecoderWarnsAtEveryCallAndNeverCompiles) {
    const std::vector<std::string> twice = {"0000:01:00.0", "0000:01:00.0"};
    EXPECT_EQ(decodeOnPlatform(4, twice), "[][] not-ready");
    EXPECT_EQ(countMessage(mainMessagesAt("WARNING"),
                           "Failed to decode GeoID [r001u02p3i04]: Unknown or unsupported platform type."),
              2u);
}

TEST_F(UtilsGeoId, FirstCompiledDecoderServesTheWholeProcess) {
    const std::string text = zuvtest::inChild([] {
                                 zuvUtils::geoIdLocationMap = {{"a", "r001u02p3i04"}, {"b", "r001i02s03"}};
                                 storeCachedPlatformCode(2);
                                 const std::string first = join(zuvUtils().decodeGeoId("a"));
                                 storeCachedPlatformCode(1);  // too late: the decoder is fixed
                                 return first + "|" + join(zuvUtils().decodeGeoId("a")) + "|" +
                                        join(zuvUtils().decodeGeoId("b")) + "|" + zuvUtils::geoIdRegexText;
                             }).text;
    EXPECT_EQ(text, std::string("001,02,3,04|001,02,3,04||") + zuvGeoIdExpressions::decodeType2);
}

TEST_F(UtilsGeoId, PrintOutListsTheMapInKeyOrder) {
    zuvUtils::geoIdLocationMap = {{"0000:02:00.0", "r001i02s03"}, {"0000:01:00.0", "r001u02p3i04"}};
    utils.printGeoIdMap();
    const std::vector<std::string> expected = {"-----Printing GEoID PCIe location map-----",
                                               "0000:01:00.0       r001u02p3i04", "0000:02:00.0       r001i02s03"};
    EXPECT_EQ(debugMessages(), expected);
}
