// GeoIDs: the search in PCI designations, the map by PCI address, and the decoder that the
// platform picks once per process.
#include "hostTestFixture.h"
#include "platform/zuvPlatformCode.h"

TEST_F(HostTest, DesignationGivesTheFirstType2GeoIdBetweenWordBoundaries) {
    for (const Lines& row : table(R"(
PCIe Slot r001u02p3i04 x8 | r001u02p3i04
B r999u99p9i99,r001u02p3i04 | r999u99p9i99
Slot r001u02p3i04a | ""
Slot _r001u02p3i04 | ""
Slot r001i02s03 | "" | DEBUG ZUV_UTILS: Error detecting GeoId : No match
)"))
        check(row, utils.getGeoIdFromDesignation(row[0]));
    zuvUtils::geoIdLocationMap = {{"0000:02:00.0", "r001i02s03"}, {"0000:01:00.0", "r001u02p3i04"}};
    EXPECT_EQ(join({utils.getGeoIdForPciAddress("0000:01:00.0"), utils.getGeoIdForPciAddress("01:00.0")}),
              "r001u02p3i04,NotAvailable");
    zuvtest::clearLogs(), utils.printGeoIdMap();
    EXPECT_EQ(logged(), (Lines{"DEBUG ZUV_UTILS: -----Printing GEoID PCIe location map-----",
                               "DEBUG ZUV_UTILS: 0000:01:00.0       r001u02p3i04",
                               "DEBUG ZUV_UTILS: 0000:02:00.0       r001i02s03"}));
}

TEST_F(HostTest, DecoderOfThePlatformIsCompiledOnceAndServesTheWholeProcess) {
    const auto decodeUnder = [](const std::string& codes) {  // the platform codes set in turn
        zuvUtils::geoIdLocationMap = {{"0000:01:00.0", "r001u02p3i04"},
                                      {"0000:02:00.0", "r001i02s03"},
                                      {"0000:03:00.0", "r001i02s03x"},
                                      {"0000:04:00.0", "r001u02p3o4"}};
        std::istringstream platforms(codes);
        std::string out;
        for (int32_t platform; platforms >> platform;) {
            storeCachedPlatformCode(platform);
            for (const char* address : {"0000:01:00.0", "0000:02:00.0", "0000:03:00.0", "0000:04:00.0", "none"}) try {
                    out += "[" + join(zuvUtils().decodeGeoId(address)) + "]";
                } catch (const std::runtime_error&) {  // the platform can't be read: it passes
                    out += "[!]";
                }
        }
        const bool unlocked = zuvUtils::geoIdRegexMutex.try_lock();  // also after an exception
        return out + (zuvUtils::geoIdRegexReady ? " ready" : " not ready") + (unlocked ? "" : " locked");
    };
    // platform codes set in turn, in a child | fields of five addresses, a decoder ready | lines logged
    for (const Lines& row : table(R"(
2 | [001,02,3,04][][][][] ready | DEBUG ZUV_UTILS: GeoID not available for PCI address [none].
1 | [][001,02,03][][][] ready | DEBUG ZUV_UTILS: Error decoding GeoID [r001i02s03x]: [1] - [No match]
0 | [][001,02,03][][][] ready
4 4 | [][][][][][][][][][] not ready
    | WARNING ZUV_UTILS: Failed to decode GeoID [r001u02p3i04]: Unknown or unsupported platform type.
2 1 | [001,02,3,04][][][][][001,02,3,04][][][][] ready
-1 | [!][!][!][!][] not ready
)"))
        zuvtest::clearLogs(), check(row, zuvtest::inChild([&] { return decodeUnder(row[0]); }).text);
}
