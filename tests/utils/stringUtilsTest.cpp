// The free string, number and expression helpers.
// GCC 12 reports a false "may be used uninitialized" inside std::regex's compiler when the
// sanitizers are on; the expressions compiled here are ordinary.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <regex>

#include "hostTestFixture.h"
#include "utils/zuvStringUtils.h"

using namespace zuvStringUtils;

TEST(StringUtils, EachHelperOnTheCasesThatTellItsRules) {
    std::string mixed = "AbC", prefixed = "0x1f";
    EXPECT_EQ(join({stripHexPrefix("0X1f"), stripHexPrefix("1f"), stripHexPrefix("0")}), "1f,1f,0");
    EXPECT_EQ(join({std::to_string(isHexString(mixed)), mixed, std::to_string(isHexString(prefixed))}), "1,abc,0");
    EXPECT_EQ(join({std::to_string(parseHexNumber("0x1f")), formatFixed(3.14159, 2), baseName("C:\\d/a\\f"),
                    baseName("/a/")}),
              "31,3.14,f,");
    const Lines lines = {"Vendor: Acme", "Device Name:  x  ", "Name: y", "Model"};
    EXPECT_EQ(
        join({findValueInLines(lines, "Name"), findValueInLines(lines, "Model"), findValueInLines(lines, "Acme")}),
        "x,Model,");
    std::istringstream printable("a\nb\tc.d"), records(std::string("abcdefg\0\0hi\0jklm", 16));
    EXPECT_EQ(printableCharacters(printable).str(), "abc.d");
    EXPECT_EQ(join(splitRecords(records, 3)), "abc,def,g,hi,jkl,m");
    EXPECT_EQ(parseKeyValueText("NAME=\"a b\"\nB=  \"x\"y\"\nNAME=3\n K=v\nnodelim\nK=v2", '='),
              (std::map<std::string, std::string>{{"NAME", "3"}, {"B", "xy"}, {" K", "v"}, {"nodelim\nK", "v2"}}));
    EXPECT_EQ(join(findPciAddresses("0000:03:00.0 and 0001a:04:00.7,ABCD:ef:01.2 0000:03:00.8 000:03:00.0")),
              "0000:03:00.0,0001a:04:00.7,ABCD:ef:01.2");
    EXPECT_EQ(join(regexFindAll(std::regex("\\b(x[0-9])|[0-9]"), "x1x2 x3 5")), "x1,,x3,");  // \b sees what went before
    const std::regex word("([a-z]+)([0-9])?");
    EXPECT_EQ(join({join(regexCaptures(word, "-- ab1", 2)), join(regexCaptures(word, "-- ab", 2)),
                    join(regexCaptures(word, "ab1", 3)), join(regexCaptures(word, "123", 2))},
                   "|"),
              "ab,1|ab||");
    std::string vendor, model;
    bool vendorFound = false, modelFound = false;
    FieldTable fields = {{"vendor", {&vendor, &vendorFound}}, {"model", {&model, &modelFound}}};
    const std::regex keyed("\\s*(\\w+)\\s*:\\s*(.*)");
    EXPECT_TRUE(assignKeyedValue(keyed, "  VENDOR : Acme", fields));
    EXPECT_FALSE(assignKeyedValue(keyed, "Serial: 1", fields) || assignKeyedValue(keyed, "-- model: m", fields) ||
                 assignKeyedValue(std::regex("(\\w+):(\\w+):(\\w+)"), "model:a:b", fields));
    EXPECT_EQ(join({vendor, model, std::to_string(vendorFound), std::to_string(modelFound)}), "Acme,,1,0");
    EXPECT_EQ(errnoMessage(ENOENT), "No such file or directory");
}
