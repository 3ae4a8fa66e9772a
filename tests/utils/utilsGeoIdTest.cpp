// GeoIDs: the search in PCI designations, the map by PCI address, and the decoder that the
// platform picks once per process.
#include <regex.h>

#include "hostTestFixture.h"
#include "platform/zuvPlatformCode.h"
#include "utils/zuvGeoIdExpressions.h"
#include "zuvChild.h"

class UtilsGeoId : public HostTest {};

TEST_F(UtilsGeoId, DesignationGivesTheFirstType2GeoIdBetweenWordBoundaries) {
    for (const Lines& row : table(R"(
PCIe Slot r001u02p3i04 x8 | r001u02p3i04
B r999u99p9i99,r001u02p3i04 | r999u99p9i99
Slot r001u02p3i04a | ""
Slot _r001u02p3i04 | ""
Slot r001i02s03 | "" | DEBUG ZUV_UTILS: Error detecting GeoId : No match
)"))
        check(row, utils.getGeoIdFromDesignation(row[0]));
    EXPECT_EQ(utils.getGeoIdForPciAddress("0000:01:00.0"), "NotAvailable");
    zuvUtils::geoIdLocationMap = {{"0000:02:00.0", "r001i02s03"}, {"0000:01:00.0", "r001u02p3i04"}};
    EXPECT_EQ(join({utils.getGeoIdForPciAddress("0000:01:00.0"), utils.getGeoIdForPciAddress("01:00.0")}),
              "r001u02p3i04,NotAvailable");
    zuvtest::clearLogs(), utils.printGeoIdMap();
    EXPECT_EQ(logged(), (Lines{"DEBUG ZUV_UTILS: -----Printing GEoID PCIe location map-----",
                               "DEBUG ZUV_UTILS: 0000:01:00.0       r001u02p3i04",
                               "DEBUG ZUV_UTILS: 0000:02:00.0       r001i02s03"}));
}

TEST_F(UtilsGeoId, DecoderOfThePlatformIsCompiledOnceAndServesTheWholeProcess) {
    // platform codes set in turn, in a child | fields of five addresses, a decoder ready | lines logged
    for (const Lines& row : table(R"(
2 | [001,02,3,04][][][][] ready | DEBUG ZUV_UTILS: GeoID not available for PCI address [none].
1 | [][001,02,03][][][] ready | DEBUG ZUV_UTILS: Error decoding GeoID [r001i02s03x]: [1] - [No match]
0 | [][001,02,03][][][] ready
4 4 | [][][][][][][][][][] not ready | WARNING ZUV_UTILS: Failed to decode GeoID [r001u02p3i04]: Unknown or unsupported platform type.
2 1 | [001,02,3,04][][][][][001,02,3,04][][][][] ready
-1 | [!][!][!][!][] not ready
)")) {
        zuvtest::clearLogs();
        check(
            row,
            zuvtest::inChild([&row = row] {
                zuvUtils::geoIdLocationMap = {{"0000:01:00.0", "r001u02p3i04"},
                                              {"0000:02:00.0", "r001i02s03"},
                                              {"0000:03:00.0", "r001i02s03x"},
                                              {"0000:04:00.0", "r001u02p3o4"}};
                std::istringstream platforms(row[0]);
                std::string out;
                for (int32_t platform; platforms >> platform;) {
                    storeCachedPlatformCode(platform);
                    for (const char* address : {"0000:01:00.0", "0000:02:00.0", "0000:03:00.0", "0000:04:00.0", "none"})
                        try {
                            out += "[" + join(zuvUtils().decodeGeoId(address)) + "]";
                        } catch (const std::runtime_error&) {  // the platform can't be read: it passes
                            out += "[!]";
                        }
                }
                const bool unlocked = zuvUtils::geoIdRegexMutex.try_lock();  // also after an exception
                return out + (zuvUtils::geoIdRegexReady ? " ready" : " not ready") + (unlocked ? "" : " locked");
            }).text);
    }
}

TEST_F(UtilsGeoId, SearchExpressionsFindEachFormInsideText) {
    struct Case {
        int32_t type;
        const char* geoId;
        std::vector<std::string> fields;
    } cases[] = {
        {1, "r001i02s03", {"001", "02", "03"}},
        {2, "r001u02p3i04", {"001", "02", "3", "04"}},
        {4, "r001u02p3o4", {"001", "02", "3", "4"}},
        {5, "r001u02p3x4y05", {"001", "02", "3", "4", "05"}},
        {6, "r001u02p3i04x5y06", {"001", "02", "3", "04", "5", "06"}},
    };
    ASSERT_EQ(sizeof zuvGeoIdExpressions::forms / sizeof zuvGeoIdExpressions::forms[0], 5u);
    for (size_t i = 0; i < 5; ++i) {
        const Case& c = cases[i];
        const zuvGeoIdForm& form = zuvGeoIdExpressions::forms[i];
        EXPECT_EQ(form.type, c.type);
        EXPECT_EQ(static_cast<size_t>(form.length), std::string(c.geoId).size());
        EXPECT_EQ(std::string(form.mask).size(), std::string(c.geoId).size());
        EXPECT_EQ(static_cast<size_t>(form.fieldCount), c.fields.size());
        regex_t compiled;
        ASSERT_EQ(regcomp(&compiled, form.expression, REG_EXTENDED), 0) << form.expression;
        const std::string text = std::string("slot ") + c.geoId + " x16";
        regmatch_t m[8];
        ASSERT_EQ(regexec(&compiled, text.c_str(), 8, m, 0), 0) << c.geoId;
        EXPECT_EQ(text.substr(m[1].rm_so, m[1].rm_eo - m[1].rm_so), c.geoId);
        for (size_t f = 0; f < c.fields.size(); ++f)
            EXPECT_EQ(text.substr(m[f + 2].rm_so, m[f + 2].rm_eo - m[f + 2].rm_so), c.fields[f]) << c.geoId;
        EXPECT_NE(regexec(&compiled, (std::string(c.geoId) + "x").c_str(), 8, m, 0), 0) << c.geoId;
        regfree(&compiled);
    }
}
