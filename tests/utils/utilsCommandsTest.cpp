#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "utils/zuvUtils.h"
#include "utilsTestLog.h"
#include "zuvSandbox.h"

using utilstest::debugMessages;
using utilstest::hasMessage;

class UtilsCommands : public ::testing::Test {
protected:
    void SetUp() override {
        utilstest::startLogging();
        utilstest::clearLogs();
    }
    zuvUtils utils;
};

TEST_F(UtilsCommands, RunCommandSplitsLongLinesAtTheReadBufferAndKeepsLineFeeds) {
    zuvtest::writeFile("/tmp/long.txt", std::string(5000, 'a') + "\nshort\nlast-without-feed");
    const std::vector<std::string> lines = utils.runCommand("cat /tmp/long.txt");
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0], std::string(2047, 'a'));
    EXPECT_EQ(lines[1], std::string(2047, 'a'));
    EXPECT_EQ(lines[2], std::string(906, 'a') + "\n");
    EXPECT_EQ(lines[3], "short\n");
    EXPECT_EQ(lines[4], "last-without-feed");
    EXPECT_TRUE(hasMessage(debugMessages(), "The command is cat /tmp/long.txt"));
}

TEST_F(UtilsCommands, RunCommandIgnoresTheExitStatus) {
    EXPECT_TRUE(utils.runCommand("true").empty());
    EXPECT_EQ(utils.runCommand("echo partial; exit 3"), std::vector<std::string>{"partial\n"});
    EXPECT_TRUE(utils.runCommand("exit 1").empty());
}

TEST_F(UtilsCommands, FindLineInFileFindsTheFirstLineHoldingThePattern) {
    zuvtest::writeFile("/tmp/lines.txt", "alpha one\nbeta two\nalpha three\ngamma last");
    zuvtest::writeFile("/tmp/empty.txt", "");
    struct Case {
        const char* path;
        const char* pattern;
        const char* expected;
    } cases[] = {
        {"/tmp/lines.txt", "alpha", "alpha one"},
        {"/tmp/lines.txt", "two", "beta two"},
        {"/tmp/lines.txt", "gamma", "gamma last"},  // last line without a line feed
        {"/tmp/lines.txt", "", "alpha one"},        // empty pattern: first line
        {"/tmp/lines.txt", "Alpha", ""},            // case-sensitive
        {"/tmp/lines.txt", "a.p", ""},              // no regular expression
        {"/tmp/empty.txt", "", ""},
    };
    for (const Case& c : cases) EXPECT_EQ(utils.findLineInFile(c.path, c.pattern), c.expected) << c.pattern;
    EXPECT_TRUE(hasMessage(debugMessages(), "The string pattern : Alpha not found in the file : /tmp/lines.txt"));
}

TEST_F(UtilsCommands, FindLineInFileLogsAFileThatCannotBeOpened) {
    EXPECT_EQ(utils.findLineInFile("/tmp/no-such-file", "x"), "");
    EXPECT_TRUE(
        hasMessage(debugMessages(), "Unable to open the file : /tmp/no-such-file, error : No such file or directory"));
}

TEST_F(UtilsCommands, FindLineInFileReadsLinesLongerThanAnyBuffer) {
    const std::string longLine = std::string(70000, 'x') + "needle";
    zuvtest::writeFile("/tmp/longline.txt", "first\n" + longLine + "\n");
    EXPECT_EQ(utils.findLineInFile("/tmp/longline.txt", "needle"), longLine);
}

TEST_F(UtilsCommands, RegexSearchFillsGroupsAndMarksUnusedEntries) {
    regex_t compiled;
    regmatch_t matches[5];
    ASSERT_TRUE(utils.regexSearch("id r001i02s03 end", "r([0-9]{3})i([0-9]{2})", &compiled, matches, 5));
    regfree(&compiled);
    EXPECT_EQ(matches[0].rm_so, 3);
    EXPECT_EQ(matches[0].rm_eo, 10);
    EXPECT_EQ(matches[1].rm_so, 4);
    EXPECT_EQ(matches[2].rm_eo, 10);
    EXPECT_EQ(matches[3].rm_so, -1);
    EXPECT_EQ(matches[4].rm_eo, -1);
    EXPECT_TRUE(hasMessage(debugMessages(), "Regex execution is successful"));
}

TEST_F(UtilsCommands, RegexSearchReportsCompileErrorsAndMisses) {
    regex_t compiled;
    regmatch_t matches[2];
    EXPECT_FALSE(utils.regexSearch("text", "(unclosed", &compiled, matches, 2));
    bool compileLogged = false;
    for (const std::string& m : debugMessages())
        compileLogged |=
            m.rfind("Error Compiling Regex, Return Value: ", 0) == 0 && m.find("Error Info: ") != std::string::npos;
    EXPECT_TRUE(compileLogged);

    EXPECT_FALSE(utils.regexSearch("text", "^z", &compiled, matches, 2));
    regfree(&compiled);
    EXPECT_TRUE(hasMessage(debugMessages(), "Error detecting match : No match"));
}

TEST_F(UtilsCommands, ErrnoMessageIsTheSystemText) {
    EXPECT_EQ(utils.errnoMessage(ENOENT), "No such file or directory");
    EXPECT_EQ(utils.errnoMessage(EACCES), "Permission denied");
}

TEST_F(UtilsCommands, TrimBlanksCutsTrailingWhiteSpaceInPlaceAndLeadingBlanksInTheResult) {
    struct Case {
        std::string text, expectedText, expectedResult;
    } cases[] = {
        {"  ab \n", "  ab", "ab"},
        {"   ", " ", ""},
        {"\t", "\t", "\t"},         // one character always stays
        {"\tab ", "\tab", "\tab"},  // a leading tab is no blank
        {"", "", ""},
        {"a", "a", "a"},
        {"x\t\r\n", "x", "x"},
    };
    for (Case& c : cases) {
        std::string text = c.text;
        std::string result = "stale";
        utils.trimBlanks(text, result);
        EXPECT_EQ(text, c.expectedText) << '[' << c.text << ']';
        EXPECT_EQ(result, c.expectedResult) << '[' << c.text << ']';
    }
}

TEST_F(UtilsCommands, ExtractBetweenTakesTheTextBetweenTheFirstMarkers) {
    struct Case {
        const char *start, *end, *text, *expected;
    } cases[] = {
        {"r", "i", "r001i02s03", "001"}, {"i", "s", "r001i02s03", "02"}, {"r", "i", "xyz", "xyz"},  // neither marker
        {"a", "b", "b a", ""},      // end marker before the start marker: all after "a"
        {"a", "b", "xaqq", "qq"},   // no end marker
        {"a", "b", "xxbqq", "xx"},  // no start marker: up to the end marker
        {"<<", ">>", "<<v>>", "v"},
    };
    for (const Case& c : cases) EXPECT_EQ(utils.extractBetween(c.start, c.end, c.text), c.expected) << c.text;
}
