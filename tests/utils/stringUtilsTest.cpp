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

static std::string joined(const Lines& parts) {
    std::string text;
    for (const std::string& part : parts) text += part + ";";
    return text;
}

TEST(StringUtils, EachHelperOnItsCases) {
    using Helper = std::function<std::string(std::string)>;
    const std::map<std::string, Helper> helpers = {
        {"strip", [](std::string t) { return stripHexPrefix(t); }},
        {"hex", [](std::string t) { return std::to_string(isHexString(t)) + t; }},
        {"parse", [](std::string t) { return std::to_string(parseHexNumber(t)); }},
        {"fixed", [](std::string t) { return formatFixed(std::stod(t), 2); }},
        {"base", [](std::string t) { return baseName(t); }},
        {"value",
         [](std::string t) {
             return findValueInLines({"Vendor: Acme", "Device Name:  x  ", "Name: y", "Model"}, t);
         }},
        {"printable",
         [](std::string t) { return printableCharacters(*std::make_unique<std::istringstream>(t)).str(); }},
        {"split",
         [](std::string t) {
             std::replace(t.begin(), t.end(), '0', '\0');
             std::istringstream in(t);
             return joined(splitRecords(in, 3));
         }},
        {"keys",
         [](std::string t) {
             std::string out;
             for (const auto& [k, v] : parseKeyValueText(t, '=')) out += k + "=" + v + ";";
             return out;
         }},
        {"pci", [](std::string t) { return joined(findPciAddresses(t)); }},
        {"findAll", [](std::string t) { return joined(regexFindAll(std::regex("\\b(x[0-9])|[0-9]"), t)); }},
        {"captures", [](std::string t) { return joined(regexCaptures(std::regex("([a-z]+)([0-9])?"), t, 2)); }},
    };
    // helper | input | result
    for (const Lines& row : table(R"(
strip | 0X1f | 1f
strip | 1f | 1f
hex | AbC | 1abc
hex | "" | 0
hex | 0x1f | 00x1f
parse | 0x1f | 31
fixed | 3.14159 | 3.14
base | C:\dir/a\f | f
base | /a/ | ""
value | Name | x
value | Model | Model
value | Acme | ""
printable | a\nb\tc.d | abc.d
split | abcdefg00hi0jklm | abc;def;g;hi;jkl;m;
keys | NAME="a b"\nB=  "x"y"\nNAME=3\n K=v\nnodelim\nK=v2 |  K=v;B=xy;NAME=3;nodelim\nK=v2;
pci | 0000:03:00.0 and 0001a:04:00.7,ABCD:ef:01.2 0000:03:00.8 000:03:00.0 | 0000:03:00.0;0001a:04:00.7;ABCD:ef:01.2;
findAll | x1x2 x3 5 | x1;;x3;;
captures | -- ab1 | ab;1;
captures | -- ab | ab;
captures | 123 | ""
)"))
        EXPECT_EQ(helpers.at(row[0])(row[1]), row[2]) << row[0] << " " << row[1];
    EXPECT_EQ(errnoMessage(ENOENT), "No such file or directory");
}

TEST(StringUtils, FindLineOrThrowAndKeyedValues) {
    zuvtest::writeFile("/tmp/find.txt", "one\ntwo pattern\nthree pattern");
    EXPECT_EQ(findLineOrThrow("/tmp/find.txt", "pattern") + "|" + findLineOrThrow("/tmp/find.txt", "three"),
              "two pattern|three pattern");
    for (const Lines& row : table(R"(
/tmp/find.txt | four | The string pattern : four not found in the file : /tmp/find.txt
/tmp/none.txt | x | Unable to open the file : /tmp/none.txt
)")) {
        try {
            findLineOrThrow(row[0], row[1]), ADD_FAILURE() << "no exception for " << row[1];
        } catch (const std::runtime_error& e) {
            EXPECT_EQ(e.what(), row[2]);
        }
    }
    std::string vendor, model;
    bool vendorFound = false, modelFound = false;
    FieldTable fields = {{"vendor", {&vendor, &vendorFound}}, {"model", {&model, &modelFound}}};
    const std::regex keyed("\\s*(\\w+)\\s*:\\s*(.*)");
    EXPECT_TRUE(assignKeyedValue(keyed, "  VENDOR : Acme", fields));
    EXPECT_FALSE(assignKeyedValue(keyed, "Serial: 1", fields) || assignKeyedValue(keyed, "Model", fields) ||
                 assignKeyedValue(std::regex("(\\w+):(\\w+):(\\w+)"), "model:a:b", fields));
    EXPECT_EQ(vendor + "|" + model + "|" + std::to_string(vendorFound) + std::to_string(modelFound), "Acme||10");
}
