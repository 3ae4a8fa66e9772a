#pragma once
// zuvUtils: what the ZUV service uses to learn about the host it runs on. It runs the host's
// tools and picks values out of their text, keeps GeoIDs and Fibre Channel names by address,
// reads the summary log for boot times, lists directories.
//
// No data members and no virtual operations: a caller may make a temporary object for each
// call. What state there is lives in the class-wide variables below. All messages go to the
// log with the tag "ZUV_UTILS". Failures are logged and show in the result; nothing throws
// apart from the exceptions named at an operation.

#include <regex.h>

#include <cstdint>
#include <ctime>
#include <map>
#include <mutex>
#include <string>
#include <vector>

// The two names of a Fibre Channel adapter kept by its VMkernel name.
struct zuvFcTopologyEntry {
    std::string pciAddress;  // text of the "Address: " line
    std::string location;    // the VMkernel name as the scan stored it
};

class zuvUtils {
public:
    // --- Commands and text ------------------------------------------------------------------
    // Output lines of a shell command, one element per fgets() piece of 2048 bytes, line
    // feeds kept; the exit status is not looked at. Empty when the shell can't be started.
    std::vector<std::string> runCommand(const std::string& command);
    // First line of the file (without its line feed) holding pattern; empty if none.
    std::string findLineInFile(const std::string& path, const std::string& pattern);
    // Compiles pattern (extended POSIX) into compiled and searches text with matchCount
    // entries. True when both worked; then the caller frees compiled with regfree().
    bool regexSearch(const std::string& text, const std::string& pattern, regex_t* compiled, regmatch_t* matches,
                     int matchCount);
    // strerror_r() text, at most 255 characters.
    std::string errnoMessage(int errnum);
    // Trailing white space off text itself (one character always stays), leading blanks
    // (0x20 only) off the copy in result.
    void trimBlanks(std::string& text, std::string& result);
    // Text between the first startMarker and the first endMarker.
    std::string extractBetween(const std::string& startMarker, const std::string& endMarker, const std::string& text);

    // --- GeoIDs -------------------------------------------------------------------------------
    // First GeoID of the r...u..p.i.. form in the text, or empty.
    std::string getGeoIdFromDesignation(const std::string& designation);
    // The GeoID kept for the address, or "NotAvailable".
    std::string getGeoIdForPciAddress(const std::string& pciAddress);
    // The fields of the address's GeoID by the decoder of this platform; empty on any failure.
    // The exception of getCachedPlatformCode() passes through.
    std::vector<std::string> decodeGeoId(const std::string& pciAddress);
    void printGeoIdMap();

    // PCI address -> GeoID. Filled by the service before any reader runs; no lock.
    static std::map<std::string, std::string> geoIdLocationMap;
    // The decoder, compiled once per process under the double-checked flag.
    static regex_t geoIdRegex;
    static std::string geoIdRegexText;
    static bool geoIdRegexReady;
    static std::mutex geoIdRegexMutex;

    // --- Time -----------------------------------------------------------------------------------
    std::string currentUtcTimestamp();    // "%FT%TZ"
    std::string currentLocalTimestamp();  // "%F %T"
    std::string currentShortTimestamp();  // "Mar 4 05:06:07", local
    void timespecDifference(const struct timespec& a, const struct timespec& b, struct timespec& result);
    // Local time of the fields at fixed positions of "YYYY-MM-DDThh:mm:ssZ"; 0 for a text
    // under 20 characters. Throws std::invalid_argument for a field that isn't a number.
    time_t parseTimestamp(const std::string& text);
    // From /var/log/vmksummary.log: 0, or -1 when the log can't be asked. An exception of
    // parseTimestamp passes through (the scratch file is removed on the way).
    int getLastShutdownTime(time_t* shutdownTime);
    int getBootTimes(time_t* lastBootTime, time_t* previousBootTime);

    // --- Host identity ----------------------------------------------------------------------
    std::string getHostName();    // one blank when uname() fails
    std::string getKernelInfo();  // one blank when uname() fails
    std::string getOSVersion();   // cached after the first non-empty answer
    std::string getOSName();      // cached after the first non-empty answer
    bool getOSType(int& osType);  // 104
    bool isValidIPv4Address(const std::string& text);
    // IPv4 addresses of the interfaces but "lo" and 127.0.0.1; keeps the auxiliary address.
    std::vector<std::string> getIPv4Addresses();
    bool setPrimaryIPv4Address(const std::vector<std::string>& addresses);
    std::string getPrimaryIPv4Address();
    std::vector<std::string> refreshIPv4Addresses();
    void syncPersistentStorage();

    static std::string osVersion;
    static std::string osName;
    static std::string primaryIPv4Address;
    static std::string auxIPv4Address;
    static std::mutex ipv4AddressMutex;

    // --- Fibre Channel ------------------------------------------------------------------------
    void collectFcTopology();
    void collectFcNames();
    bool isFcTopologyName(const std::string& name);
    zuvFcTopologyEntry getFcTopologyEntry(const std::string& name);
    std::string getFcPciAddress(const std::string& name);
    std::vector<std::string> getFcLocationFields(const std::string& name);
    std::string getFcAdapterForNodeName(const std::string& nodeName);
    void printFcTopologyMap();
    void printFcNameMap();
    // 1 when the adapter listing could be run (pciString set only if found), -1 otherwise.
    int getAdapterPciString(const std::string& adapter, std::string& pciString);

    static std::map<std::string, zuvFcTopologyEntry> fcTopologyMap;
    static std::map<std::string, std::string> fcNameMap;

    // --- Directory listing ----------------------------------------------------------------------
    // The number of entries scandir() gave (with "." and ".."), -1 when the directory can't be
    // read, 0 for a refused symbolic link. Names are added to what names already holds.
    int32_t listDirectory(const std::string& path, std::vector<std::string>& names);
    int32_t listEntriesContainingIb(const std::string& path, std::vector<std::string>& names);
    int32_t listEntriesStartingWithZeros(const std::string& path, std::vector<std::string>& names);
    int32_t listEntriesWithPrefix(const std::string& path, const std::string& prefix, std::vector<std::string>& names);
};
