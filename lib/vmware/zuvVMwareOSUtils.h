#pragma once
// zuvVMwareOSUtils: how the ZUV service asks an ESXi host about itself. It reads uname(),
// sysinfo() and getifaddrs() (through zuvHostSystem, so tests can vary them) and runs the
// host's own tools through a shell, then picks values out of their text.
//
// A plain value without a constructor: each user keeps its own object with these initial
// values. Apart from the service start time the class keeps no state and caches no answer.
// Failures are reported by results (an empty string or list, 0, a blank), with a log
// message under the tag "VMWARE_OS_UTILS"; only runCommandOrThrow and updateStartStopFile
// throw.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

class zuvVMwareOSUtils {
public:
    // --- Host queries -------------------------------------------------------------------
    std::string getHostName();
    // sysname, nodename, release, version and machine of uname(), joined by single blanks.
    // Both give a single blank when uname() fails.
    std::string getKernelInfo();
    std::string getInstallPath();        // "/opt/kelzuv"
    std::string getVitalFilePrefix();    // install path + "/vital/kel"
    std::string getNicListPath();        // install path + "/tmp/zuv_niclist.txt"
    std::string getNicAddDetailsPath();  // install path + "/tmp/zuv_nicAddDetails.txt"
    // ctime() of the current second without its line feed.
    std::string getCurrentTimeString();

    // Output of a shell command, one entry per fgets() piece of commandLineSize bytes, line
    // feeds kept. The exit status is not looked at. Empty when the shell can't be started.
    std::vector<std::string> runCommand(const std::string& command);
    // The same, but throws std::runtime_error with the errno text when popen() fails.
    std::vector<std::string> runCommandOrThrow(const std::string& command);

    // Value behind the first colon of the "Version:"/"Product:" line of
    // "localcli system version get", trimmed; empty without such a line.
    std::string getOSVersion();
    std::string getOSProduct();
    // IPv4 addresses of every interface but "lo", in the order of getifaddrs().
    std::vector<std::string> getIPv4Addresses();

    // strerror_r() text of an error number, cut at 1024 and at 256 bytes.
    std::string getErrorText(int errorNumber);
    std::string getShortErrorText(int errorNumber);

    // Fixed numbers the service reads: the OS type (as zuvUtils::getOSType gives it), and
    // two further constants kept for the service.
    int getOSTypeNumber() const { return 104; }
    int getOSSubTypeNumber() const { return 0; }
    int getDefaultWaitSeconds() const { return 30; }

    // --- Boot and shutdown tracking (start-stop state file) --------------------------------
    // time() at the first call in this process; the same value afterwards.
    int64_t getServiceStartTime();
    // Service start time minus the uptime of sysinfo(); start time - 1 if sysinfo() fails.
    int64_t getSystemBootTime();
    // Value of the first whitespace-separated token equal to key, read by strtol; 0 when the
    // file, the key or a value can't be read.
    int64_t readStartStopValue(const std::string& key);
    // 0: service init (create the file, or set current_start); otherwise: service shutdown
    // (rewrite all three keys). Throws std::runtime_error "Error opening the zuv startup
    // file" when the file can't be created or written.
    void updateStartStopFile(int mode);
    // Sleeps 20 seconds, then sets at most one of the two flags to true; never clears one.
    void genOSBootLogic(bool* gracefulBoot, bool* nonGracefulBoot);
    // last_start := current_start, unless current_start is 0 or the file is absent.
    void updateLastStart();
    // Runs "/bin/vim-cmd hostsvc/firmware/sync_config"; a failure is only logged.
    void syncPersistentStorage();

    // --- PCI id look-up in the hardware listing ---------------------------------------------
    // (device id, vendor id) of the listing block(s) matching key, an awk pattern; each id is
    // "0x" and four characters, or empty when not found.
    std::pair<std::string, std::string> getPciIds(const std::string& key);
    // (subsystem device id, subsystem vendor id), in the same way.
    std::pair<std::string, std::string> getPciSubIds(const std::string& key);
    // " ,<name>: <value>" for each "name: value" line, trimmed.
    std::string joinFieldLines(const std::vector<std::string>& lines);
    // What follows ": " in the first match of an extended POSIX expression; empty if none.
    std::string extractFieldValue(const std::string& text, const std::string& expression);

    // --- Memory figures -----------------------------------------------------------------------
    // {machine memory, free memory} in whole gigabytes from one esxtop batch sample, or an
    // empty list when esxtop fails (logged once per object) or its output can't be read.
    std::vector<double> getMemoryFigures();

    int commandLineSize = 2048;  // bytes of the buffer that command output is read in
    int reservedBufferSize = 1024;
    bool memoryErrorLogged = false;
};

// tm_zone of the local time now.
std::string getTimeZoneName();
