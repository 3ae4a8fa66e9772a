// The time texts of the present, the time stamp parser, and boot and shutdown times from the
// host's summary log.
#include "hostTestFixture.h"

TEST_F(HostTest, TimeTextsOfThePresentAndTheParser) {
    // time now | zone | short form, UTC, local, ctime text, zone name
    for (const Lines& row : table(R"(
1584162367 | ZZZ-12 | Mar 14 17:06:07,2020-03-14T05:06:07Z,2020-03-14 17:06:07,Sat Mar 14 17:06:07 2020,ZZZ
1609545609 | EST5 | Jan 1 19:00:09,2021-01-02T00:00:09Z,2021-01-01 19:00:09,Fri Jan  1 19:00:09 2021,EST
)")) {
        fixedNow = std::stoll(row[0]), setenv("TZ", row[1].c_str(), 1), tzset();
        check(row,
              utils.currentShortTimestamp() + "," + utils.currentUtcTimestamp() + "," + utils.currentLocalTimestamp() +
                  "," + os.getCurrentTimeString() + "," + getTimeZoneName(),
              2);
    }
    // text | zone | time now (its daylight flag counts) | the time ("!": the exception instead) | lines logged
    for (const Lines& row : table(R"(
2020-03-04T05:06:07Z | UTC0 | 1700000000 | 1583298367
2020/03/04 05:06:07!... | UTC0 | 1700000000 | 1583298367
2020-03-04T05:06:07 | UTC0 | 1700000000 | 0 | DEBUG ZUV_UTILS: Invalid time stamp format.
2020-03-04T06:06:07Z | CET-1CEST,M3.5.0,M10.5.0/3 | 1700000000 | 1583298367
2020-03-04T06:06:07Z | CET-1CEST,M3.5.0,M10.5.0/3 | 1593666367 | 1583294767
abcd-03-04T05:06:07Z | UTC0 | 1700000000 | !stoi
)")) {
        fixedNow = std::stoll(row[2]), setenv("TZ", row[1].c_str(), 1), tzset();
        check(row, orThrown([&] { return std::to_string(utils.parseTimestamp(row[0])); }), 3);
    }
    struct timespec result {};
    utils.timespecDifference({5, 100}, {3, 200}, result);
    EXPECT_EQ(result.tv_sec * 1000000000 + result.tv_nsec, 1999999900);
}

TEST_F(HostTest, BootAndShutdownTimesComeFromTheLastLinesOfTheSummaryLog) {
    // summary log ("none": no file) | boot times: result, last - previous | shutdown time: result, the time (7 before)
    for (const Lines& row : table(R"(
2020-03-01T00:00:00Z Host has booted\n2020-03-02T05:06:07Z Host is rebooting\n2020-03-03T00:00:00Z x Host has booted\n
    2020-03-04T05:06:07Z x: Host has booted\n
    | 0,104767 0,1583125567
2020-03-04T05:06:07Z Host has booted | 0,1583298367 0,7
2020-03-01T00:00:00Z Host is rebooting\n2020-03-04T05:06:07Z Host is rebooting\n | 0,7 0,1583298367
2020-XX-04T05:06:07Z Host has booted\n2020-XX-04T05:06:07Z Host is rebooting | !stoi !stoi
)")) {
        unlink("/var/log/vmksummary.log");
        if (row[0] != "none") zuvtest::writeFile("/var/log/vmksummary.log", row[0]);
        std::string results;
        for (const char* op : {"boot", "shutdown"}) {
            results += (results.empty() ? "" : " ") + orThrown([&] { return run(op); });
            EXPECT_FALSE(zuvtest::fileExists("/tmp/zuvboot.log")) << op;
        }
        check(row, results);
    }
    // awk | the results | the warnings: the shutdown time's has two blanks when the file can't be read
    for (const Lines& row : table(R"(
exit 3 | -1,0 -1,7 | WARNING ZUV_UTILS: Error occurred in gathering system boot time information.
    | WARNING ZUV_UTILS: Error occurred in gathering system last shutdown time information.
rm -f /tmp/zuvboot.log | -1,0 -1,7 | WARNING ZUV_UTILS: Error occurred in gathering system boot time information.
    | WARNING ZUV_UTILS: Error occurred in gathering system last shutdown time  information.
)"))
        replaceTool("awk", row[0]), zuvtest::clearLogs(), check(row, run("boot") + " " + run("shutdown"));
}
