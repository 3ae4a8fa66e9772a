// GCC 12 reports a false "may be used uninitialized" inside std::regex's compiler when the
// sanitizers are on; the expressions compiled here are ordinary.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "utils/zuvStringUtils.h"
#include "zuvSandbox.h"

using namespace zuvStringUtils;
using Strings = std::vector<std::string>;

TEST(StringUtils, HexText) {
    struct StripCase {
        const char *text, *expected;
    } strips[] = {{"0X1f", "1f"}, {"0x1F", "1F"}, {"1f", "1f"}, {"0", "0"}, {"", ""}, {"x0", "x0"}};
    for (const StripCase& c : strips) EXPECT_EQ(stripHexPrefix(c.text), c.expected) << c.text;

    struct HexCase {
        const char *text, *after;
        bool hex;
    } hexes[] = {{"", "", false},
                 {"AbC", "abc", true},
                 {"0x1f", "0x1f", false},
                 {"12G", "12g", false},
                 {"deadBEEF", "deadbeef", true}};
    for (const HexCase& c : hexes) {
        std::string text = c.text;
        EXPECT_EQ(isHexString(text), c.hex) << c.text;
        EXPECT_EQ(text, c.after);
    }

    struct NumberCase {
        const char* text;
        uint32_t value;
    } numbers[] = {{"1f", 31},
                   {"0x1f", 31},
                   {"  ff", 255},
                   {"1fzz", 31},
                   {"zz", 0},
                   {"", 0},
                   {"ffffffff", UINT32_MAX},
                   {"1ffffffff", UINT32_MAX}};
    for (const NumberCase& c : numbers) EXPECT_EQ(parseHexNumber(c.text), c.value) << c.text;
}

TEST(StringUtils, ConversionsAndPaths) {
    EXPECT_EQ(formatFixed(3.14159, 2), "3.14");
    EXPECT_EQ(formatFixed(2.5, 0), "2");
    EXPECT_EQ(formatFixed(-1, 3), "-1.000");
    struct Case {
        const char *path, *base;
    } cases[] = {
        {"/a/b/c.txt", "c.txt"}, {"C:\\dir\\file", "file"}, {"a/b\\c", "c"}, {"plain", "plain"}, {"/a/", ""}, {"", ""}};
    for (const Case& c : cases) EXPECT_EQ(baseName(c.path), c.base) << c.path;
    EXPECT_EQ(errnoMessage(ENOENT), "No such file or directory");
}

TEST(StringUtils, ValueOfAKeyInLines) {
    const Strings lines = {"Vendor: Acme", "Device Name:  x  ", "Name: second", "Serial 12:34", "Model"};
    struct Case {
        const char *key, *value;
    } cases[] = {
        {"Name", "x"},                         // substring of the key part, first line wins
        {"Vendor", "Acme"}, {"Serial", "34"},  // value behind the first colon
        {"34", ""},                            // only the key part is searched
        {"Model", "Model"},                    // no colon: the whole line
        {"Missing", ""},
    };
    for (const Case& c : cases) EXPECT_EQ(findValueInLines(lines, c.key), c.value) << c.key;
}

TEST(StringUtils, PrintableCharactersAndRecords) {
    std::istringstream in(
        std::string("ab\ncd\t\x01\x7f"
                    "e\0f",
                    11));
    EXPECT_EQ(printableCharacters(in).str(), "abcdef");

    std::istringstream records(std::string("abcdefg\0\0hi\0jklm", 16));
    EXPECT_EQ(splitRecords(records, 3), (Strings{"abc", "def", "g", "hi", "jkl", "m"}));
    std::istringstream one(std::string("abc", 3));
    EXPECT_EQ(splitRecords(one, 1), (Strings{"a", "b", "c"}));
}

TEST(StringUtils, KeyValueText) {
    using Map = std::map<std::string, std::string>;
    EXPECT_EQ(parseKeyValueText("NAME=\"a b\"\n", '='), (Map{{"NAME", "a b"}}));
    EXPECT_EQ(parseKeyValueText("A=1\nB=  \"x\"y\"\nA=3\n", '='), (Map{{"A", "3"}, {"B", "xy"}}));
    EXPECT_EQ(parseKeyValueText(" K=v\nlast=v2", '='), (Map{{" K", "v"}, {"last", "v2"}}));
    EXPECT_EQ(parseKeyValueText("nodelim\nK=v\n", '='), (Map{{"nodelim\nK", "v"}}));
    EXPECT_TRUE(parseKeyValueText("", '=').empty());
}

TEST(StringUtils, FindLineOrThrow) {
    ASSERT_TRUE(zuvtest::inSandbox());
    zuvtest::writeFile("/tmp/find.txt", "one\ntwo pattern\nthree pattern");
    EXPECT_EQ(findLineOrThrow("/tmp/find.txt", "pattern"), "two pattern");
    EXPECT_EQ(findLineOrThrow("/tmp/find.txt", "three"), "three pattern");
    try {
        findLineOrThrow("/tmp/find.txt", "four");
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "The string pattern : four not found in the file : /tmp/find.txt");
    }
    try {
        findLineOrThrow("/tmp/none.txt", "x");
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "Unable to open the file : /tmp/none.txt");
    }
}

TEST(StringUtils, ExpressionHelpers) {
    const std::regex word("([a-z]+)([0-9])?");
    EXPECT_EQ(regexFindAll(word, "ab1 cd ef2"), (Strings{"ab", "cd", "ef"}));
    EXPECT_EQ(regexFindAll(std::regex("[0-9]+"), "1 22 333"), (Strings{"", "", ""}));  // no group 1
    EXPECT_EQ(regexFindAll(std::regex("\\b(x[0-9])"), "x1x2 x3"), (Strings{"x1", "x3"}));
    EXPECT_TRUE(regexFindAll(word, "123").empty());

    EXPECT_EQ(regexCaptures(word, "-- ab1", 2), (Strings{"ab", "1"}));
    EXPECT_EQ(regexCaptures(word, "-- ab", 2), (Strings{"ab"}));  // group 2 took no part
    EXPECT_TRUE(regexCaptures(word, "ab1", 3).empty());
    EXPECT_TRUE(regexCaptures(word, "123", 2).empty());

    std::string vendor, model;
    bool vendorFound = false, modelFound = false;
    FieldTable fields = {{"vendor", {&vendor, &vendorFound}}, {"model", {&model, &modelFound}}};
    const std::regex keyed("\\s*(\\w+)\\s*:\\s*(.*)");
    EXPECT_TRUE(assignKeyedValue(keyed, "  VENDOR : Acme", fields));
    EXPECT_EQ(vendor, "Acme");
    EXPECT_TRUE(vendorFound);
    EXPECT_FALSE(assignKeyedValue(keyed, "Serial: 1", fields));                               // not in the table
    EXPECT_FALSE(assignKeyedValue(keyed, "Model", fields));                                   // no whole-line match
    EXPECT_FALSE(assignKeyedValue(std::regex("(\\w+):(\\w+):(\\w+)"), "model:a:b", fields));  // three groups
    EXPECT_FALSE(modelFound);
    EXPECT_EQ(model, "");
}

TEST(StringUtils, PciAddressesInOrder) {
    struct Case {
        const char* text;
        Strings found;
    } cases[] = {
        {"dev 0000:03:00.0 and 0001a:04:00.7 end", {"0000:03:00.0", "0001a:04:00.7"}},
        {"0000:03:00.8", {}},  // function above 7
        {"000:03:00.0", {}},   // short domain
        {"ABCD:ef:01.2,0000:00:1f.3", {"ABCD:ef:01.2", "0000:00:1f.3"}},
        {"", {}},
    };
    for (const Case& c : cases) EXPECT_EQ(findPciAddresses(c.text), c.found) << c.text;
}
