// Text picked out of files and strings: the line search, the POSIX expression search, the two
// text cutters and the error text.
#include "hostTestFixture.h"
#include "utils/zuvStringUtils.h"

TEST_F(HostTest, FindLineAndRegexSearch) {
    zuvtest::writeFile("/tmp/lines.txt", "alpha one\nbeta two\nalpha three\ngamma last");
    // pattern | file | first line holding it, or findLineOrThrow's exception ("!") | the same from findLineInFile |
    // lines logged
    for (const Lines& row : table(R"(
two | /tmp/lines.txt | beta two | beta two
"" | /tmp/lines.txt | alpha one | alpha one
Alpha | /tmp/lines.txt | !The string pattern : Alpha not found in the file : /tmp/lines.txt | ""
    | DEBUG ZUV_UTILS: The string pattern : Alpha not found in the file : /tmp/lines.txt
a.p | /tmp/lines.txt | !The string pattern : a.p not found in the file : /tmp/lines.txt | ""
x | /tmp/none.txt | !Unable to open the file : /tmp/none.txt | ""
    | DEBUG ZUV_UTILS: Unable to open the file : /tmp/none.txt, error : No such file or directory
)")) {
        EXPECT_EQ(orThrown([&] { return zuvStringUtils::findLineOrThrow(row[1], row[0]); }), row[2]) << row[0];
        check(row, utils.findLineInFile(row[1], row[0]), 3);
    }
    regex_t compiled;
    regmatch_t m[5];
    ASSERT_TRUE(utils.regexSearch("id r001i02s03 end", "r([0-9]{3})i([0-9]{2})", &compiled, m, 5));
    regfree(&compiled);
    EXPECT_EQ(std::vector<int>({m[1].rm_so, m[2].rm_eo}), std::vector<int>({4, 10}));
    EXPECT_FALSE(utils.regexSearch("text", "(unclosed", &compiled, m, 2) ||
                 utils.regexSearch("text", "^z", &compiled, m, 2));
    regfree(&compiled);
    check({"regexSearch", "", "DEBUG ZUV_UTILS: Regex execution is successful",
           "DEBUG ZUV_UTILS: Error detecting match : No match",
           "DEBUG ZUV_UTILS: Error Compiling Regex, Return Value: 8, Error Info: Unmatched ( or \\("},
          "");
    EXPECT_EQ(utils.errnoMessage(EACCES), "Permission denied");
}

TEST_F(HostTest, TrimBlanksAndExtractBetween) {
    // [text] | [text afterwards] [result]
    for (const Lines& row : table(R"(
[  ab \n] | [  ab] [ab]
[   ] | [ ] []
[\t] | [\t] [\t]
[\tab ] | [\tab] [\tab]
[x\t\n] | [x] [x]
)")) {
        std::string text = row[0].substr(1, row[0].size() - 2), result = "stale";
        utils.trimBlanks(text, result);
        check(row, "[" + text + "] [" + result + "]");
    }
    // text | start marker | end marker | the text between
    for (const Lines& row : table(R"(
r001i02s03 | r | i | 001
xyz | r | i | xyz
b a | a | b | ""
xaqq | a | b | qq
xxbqq | a | b | xx
)"))
        check(row, utils.extractBetween(row[1], row[2], row[0]), 3);
}
