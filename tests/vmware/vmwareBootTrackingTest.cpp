// The start-stop state file: its rewrites at service init and shutdown, the boot decision, and
// what failures leave behind.
#include <linux/capability.h>
#include <sys/syscall.h>

#include "hostTestFixture.h"
#include "utils/zuvScratchFile.h"

const std::string kVital = "/opt/kelzuv/vital", kState = kVital + "/kelZUVStartStop.txt";
const std::string kTwin = kVital + "/kelZUVStartStoptmp.txt", kOld = "last_start 5\nlast_stop 9\ncurrent_start 8\n";

// A cell's "NOW" is kTestNow, the service start time of the tests.
static std::string timed(std::string text) {
    for (size_t at; (at = text.find("NOW")) != std::string::npos;) text.replace(at, 3, std::to_string(kTestNow));
    return text;
}

class BootTracking : public HostTest {
protected:
    void SetUp() override {
        HostTest::SetUp();
        zuvtest::makeDirectories(kVital), unlink(kState.c_str()), rmdir(kTwin.c_str()), unlink(kTwin.c_str());
    }
    std::string act(const std::string& action) {  // the state file after the action
        action == "init"   ? os.updateStartStopFile(0)
        : action == "stop" ? os.updateStartStopFile(1)
                           : os.updateLastStart();
        return zuvtest::fileExists(kState) ? zuvtest::readFile(kState) : "none";
    }
};

TEST_F(BootTracking, ValueIsTheStrtolOfTheTokenAfterTheFirstWholeTokenKey) {
    for (const Lines& row : table(R"(
last_start 1700000000123\n | last_start | 1700000000123 | DEBUG VMWARE_OS_UTILS: content to match =last_start
    | DEBUG VMWARE_OS_UTILS: Successful in opening zuv startup file | DEBUG VMWARE_OS_UTILS: Found a match 1700000000123
last_start 123abc\nlast_stop -17 | last_start | 123
last_start abc\nlast_stop 5\n | last_start | 0
last_start\n\n  99\n | last_start | 99
xlast_start 5\nlast_start_old 6\nlast_start 7\nlast_start 8\n | last_start | 7
last_stop 30\n | last_start | 0
current_start 5 last_stop -8 | last_stop | -8
none | last_start | 0 | ERROR VMWARE_OS_UTILS: Error occurred in opening zuv startup file
)")) {
        unlink(kState.c_str());
        if (row[0] != "none") zuvtest::writeFile(kState, row[0]);
        zuvtest::clearLogs(), check(row, std::to_string(os.readStartStopValue(row[1])), 2);
    }
}

TEST_F(BootTracking, RewritesChangeTheirKeyLinesAndNeverTakeALeftOverTwin) {
    // state file before ("as left": as the row before left it) | action | after | debug line | left-over twin
    for (const Lines& row : table(R"(
none | init | current_start NOW\nlast_start 0\nlast_stop 0\n | Successful in creating the file | gone
as left | last | current_start NOW\nlast_start NOW\nlast_stop 0\n
    | After sending OS boots events, we can set current_start to last_start otherwise  it will happen during ZUV
     shutdown. And in case of crash it won't happen.
    | gone
as left | stop | last_start NOW\nlast_stop NOW\ncurrent_start 0\n
    | During ZUV service shutdown, last_start : NOW, last_stop : NOW, current_start : 0 | gone
last_start 5\nlast_stop 9\ncurrent_start 0\n | init | last_start 5\nlast_stop 9\ncurrent_start NOW\n
    | During ZUV service init, last_start : 5, last_stop : 9, current_start : NOW | gone
last_stop 9\n\n# current_start 3\nlast_start 5 | init | last_stop 9\n\ncurrent_start NOW\nlast_start 5\n | "" | gone
last_start 5\nlast_stop 9\n | init | last_start 5\nlast_stop 9\n | "" | gone
as left | last | last_start 5\nlast_stop 9\n | "" | stays
last_stop 9\nlast_start 5\ncurrent_start 77\nold last_start 1\n | last
    | last_stop 9\nlast_start 77\ncurrent_start 77\nlast_start 77\n | "" | gone
none | last | none | Could not update the 'last_start' value in /opt/kelzuv/vital/kelZUVStartStop.txt | stays
)")) {
        if (row[0] != "as left") unlink(kState.c_str());
        if (row[0] != "as left" && row[0] != "none") zuvtest::writeFile(kState, row[0]);
        zuvtest::writeFile(kTwin, "last_start 1111\nlast_stop 2222\ncurrent_start 3333\ngarbage"), zuvtest::clearLogs();
        EXPECT_EQ(act(row[1]), timed(row[2])) << row[0] << " " << row[1];
        EXPECT_TRUE(row[3].empty() || saw("DEBUG VMWARE_OS_UTILS: " + timed(row[3]))) << row[3];
        EXPECT_EQ(zuvtest::fileExists(kTwin), row[4] == "stays") << row[0] << " " << row[1];
    }
}

TEST_F(BootTracking, DecisionFollowsTheOrderOfStartStopAndBoot) {
    const auto at = [](const std::string& cell) {
        return cell[0] == 'N' ? kTestNow + std::stoll(cell.substr(3)) : std::stoll(cell);
    };
    // last_start | last_stop | boot | flags before, after | lines logged behind "DEBUG VMWARE_OS_UTILS: "
    for (const Lines& row : table(R"(
NOW-500 | NOW-400 | NOW-300 | 00 10 | In gen OS boot logic.Last shutdown was graceful.
    | The current system boot time is 1699999700
NOW-500 | NOW-400 | NOW-400 | 00 00 | ZUV crashed in current boot so do nothing in point 2
NOW-500 | NOW-400 | NOW-450 | 11 11 | ZUV crashed in current boot so do nothing in point 2
NOW-400 | NOW-400 | NOW-10 | 00 00
NOW-400 | NOW-500 | NOW-300 | 00 01 | In gen OS boot logic.Last shutdown was not-graceful.
NOW-400 | NOW-500 | NOW-400 | 00 00 | ZUV crashed in current boot so do nothing in point 3
NOW-400 | NOW-500 | NOW-450 | 00 00 | ZUV crashed in current boot so do nothing in point 3
0 | 0 | NOW+0 | 10 10
)")) {
        zuvtest::writeFile(kState,
                           "last_start " + std::to_string(at(row[0])) + "\nlast_stop " + std::to_string(at(row[1])));
        host.uptime = static_cast<long>(kTestNow - at(row[2]));
        bool graceful = row[3][0] == '1', nonGraceful = row[3][1] == '1';
        zuvtest::clearLogs(), os.genOSBootLogic(&graceful, &nonGraceful);
        Lines expected = row;
        for (size_t i = 4; i < row.size(); ++i) expected[i] = "DEBUG VMWARE_OS_UTILS: " + row[i];
        check(expected, row[3].substr(0, 3) + std::to_string(graceful) + std::to_string(nonGraceful), 3);
    }
    EXPECT_EQ(host.sleeps, std::vector<unsigned>(8, 20));
}

TEST_F(BootTracking, FailedRewritesKeepTheOldStateFileWhole) {
    // A twin that can't be made; tests/faults fails every other step of a rewrite in turn.
    zuvtest::writeFile(kState, kOld), zuvtest::makeDirectories(kTwin);
    EXPECT_EQ(act("init") + act("last"), kOld + kOld);
    EXPECT_THROW(os.updateStartStopFile(1), std::runtime_error);
    EXPECT_EQ(zuvtest::readFile(kState), kOld);
    EXPECT_EQ(zuvtest::countMessage(logged(), "ERROR VMWARE_OS_UTILS: Could not rewrite " + kState +
                                                  ", its previous content is kept: Is a directory"),
              2u);
    unlink(kState.c_str());  // a missing file that can't be created
    EXPECT_EQ(orThrown([&] { return act("init"); }), "!Error opening the zuv startup file");
    EXPECT_FALSE(zuvtest::fileExists(kState));
}

TEST_F(BootTracking, StateFileThatIsThereButCannotBeOpenedIsKeptAtInit) {
    zuvtest::writeFile(kState, kOld), chmod(kState.c_str(), 0);
    EXPECT_EQ(zuvtest::inChild([this] {
                  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
                  __user_cap_data_struct none[2] = {};
                  syscall(SYS_capset, &header, none);  // root meets file permissions now
                  return act("init");
              }).text,
              "exception: Error opening the zuv startup file");
    EXPECT_EQ(zuvtest::readFile(kState), kOld);
    EXPECT_TRUE(saw("ERROR VMWARE_OS_UTILS: Could not open " + kState + ", its content is kept: Permission denied"));
}

TEST_F(BootTracking, StartAndBootTimesAndTheModesOfTheFilesMade) {
    EXPECT_EQ(zuvVMwareOSUtils().getServiceStartTime(), kTestNow);
    fixedNow = kTestNow + 50;  // the start time was fixed at the first call
    host.uptime = 3600;
    EXPECT_EQ(os.getServiceStartTime() - os.getSystemBootTime(), 3600);
    host.sysinfoError = EIO;
    EXPECT_EQ(os.getSystemBootTime(), kTestNow - 1);
    EXPECT_TRUE(
        saw("DEBUG VMWARE_OS_UTILS: Unable to fetch system Up Time using sysinfo API - -1, 5 : Input/output error"));
    const auto mode = [](const std::string& path) {
        struct stat status {};
        return stat(path.c_str(), &status) == 0
                   ? (std::ostringstream() << std::oct << (status.st_mode & 0777) << " ").str()
                   : "none ";
    };
    const mode_t saved = umask(0);
    zuvScratchFile scratch("/tmp/scratch");
    std::string modes = (scratch.prepare(), mode("/tmp/scratch"));
    for (const char* action : {"init", "last", "stop"}) modes += (act(action), mode(kState));
    umask(saved);
    EXPECT_EQ(modes, "600 666 666 666 ");  // the state file as a stream makes it: 0666 less the umask
}
