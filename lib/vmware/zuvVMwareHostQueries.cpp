// Host identity, fixed paths, time texts, OS version and IPv4 addresses.
#include <cerrno>
#include <cstring>
#include <ctime>

#include "log/zuvLogger.h"
#include "utils/zuvStringUtils.h"
#include "vmware/zuvHostCalls.h"
#include "vmware/zuvVMwareLogTag.h"
#include "vmware/zuvVMwareOSUtils.h"

namespace {

// The value behind the first colon of the first line that the command printed.
std::string valueAfterColon(const std::vector<std::string>& lines) {
    if (lines.empty()) return "";
    const size_t colon = lines.front().find(':');
    if (colon == std::string::npos) return "";
    return zuvStringUtils::trim(lines.front().substr(colon + 1), zuvStringUtils::whitespaceCharacters);
}

}  // namespace

std::string zuvVMwareOSUtils::getHostName() { return zuvHostNodeName(kVMwareLogTag); }

std::string zuvVMwareOSUtils::getKernelInfo() { return zuvHostKernelLine(kVMwareLogTag); }

std::string zuvVMwareOSUtils::getInstallPath() { return "/opt/kelzuv"; }
std::string zuvVMwareOSUtils::getVitalFilePrefix() { return getInstallPath() + "/vital/kel"; }
std::string zuvVMwareOSUtils::getNicListPath() { return getInstallPath() + "/tmp/zuv_niclist.txt"; }
std::string zuvVMwareOSUtils::getNicAddDetailsPath() { return getInstallPath() + "/tmp/zuv_nicAddDetails.txt"; }

std::string zuvVMwareOSUtils::getCurrentTimeString() {
    const time_t now = time(nullptr);
    char buffer[64] = {};
    if (ctime_r(&now, buffer) == nullptr) return "";
    return zuvStringUtils::trim(buffer, zuvStringUtils::whitespaceCharacters);
}

std::string getTimeZoneName() {
    const time_t now = time(nullptr);
    struct tm broken {};
    localtime_r(&now, &broken);
    return broken.tm_zone ? broken.tm_zone : "";
}

std::string zuvVMwareOSUtils::getOSVersion() {
    return valueAfterColon(runCommand("localcli system version get | grep -i Version:"));
}

std::string zuvVMwareOSUtils::getOSProduct() {
    return valueAfterColon(runCommand("localcli system version get | grep -i Product:"));
}

std::vector<std::string> zuvVMwareOSUtils::getIPv4Addresses() {
    std::vector<std::string> addresses;
    for (const zuvInterfaceAddress& entry : zuvHostIPv4Interfaces(kVMwareLogTag)) {
        if (entry.name != "lo") addresses.push_back(entry.address);
    }
    return addresses;
}

std::string zuvVMwareOSUtils::getErrorText(int errorNumber) { return zuvErrnoText(errorNumber, 1024); }
std::string zuvVMwareOSUtils::getShortErrorText(int errorNumber) { return zuvErrnoText(errorNumber, 256); }
