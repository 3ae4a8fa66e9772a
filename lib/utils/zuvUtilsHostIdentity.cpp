// Host name, kernel line, OS name and version, and the IPv4 address that stands for the host.

#include <arpa/inet.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>

#include "log/zuvLogger.h"
#include "utils/zuvCommandPipe.h"
#include "utils/zuvUtils.h"
#include "utils/zuvUtilsLogTag.h"
#include "vmware/zuvHostCalls.h"

std::string zuvUtils::osVersion;
std::string zuvUtils::osName;
std::string zuvUtils::primaryIPv4Address;
std::string zuvUtils::auxIPv4Address;
std::mutex zuvUtils::ipv4AddressMutex;

namespace {
const char* const kLoopbackAddress = "127.0.0.1";
constexpr int kOSAnswerReadSize = 40;
constexpr int kOSTypeNumber = 104;

// The value of a "localcli system version get" line, cached in cache after the first
// non-empty answer: all output joined, all white space removed, what follows the first ":".
std::string cachedVersionValue(std::string& cache, const char* command, const char* failure) {
    if (!cache.empty()) return cache;
    const zuvCommandPipe stream = zuvOpenCommand(command);
    if (!stream) {
        ZUV_LOG_ERROR(kUtilsLogTag, "%s", failure);
        return cache;
    }
    std::string answer = zuvReadJoined(stream.get(), kOSAnswerReadSize);
    if (answer.empty()) return cache;
    answer.erase(
        std::remove_if(answer.begin(), answer.end(), [](char c) { return isspace(static_cast<unsigned char>(c)); }),
        answer.end());
    const size_t colon = answer.find(':');
    cache = colon == std::string::npos ? answer : answer.substr(colon + 1);
    return cache;
}
}  // namespace

std::string zuvUtils::getHostName() { return zuvHostNodeName(kUtilsLogTag); }

std::string zuvUtils::getKernelInfo() { return zuvHostKernelLine(kUtilsLogTag); }

std::string zuvUtils::getOSVersion() {
    return cachedVersionValue(
        osVersion, "localcli system version get | grep -i Version:", "Error occurred in identifying OS version.");
}

std::string zuvUtils::getOSName() {
    return cachedVersionValue(osName, "localcli system version get | grep -i Product",
                              "Error occurred in identifying OS Name.");
}

bool zuvUtils::getOSType(int& osType) {
    osType = kOSTypeNumber;
    return true;
}

bool zuvUtils::isValidIPv4Address(const std::string& text) {
    struct in_addr address {};
    return inet_pton(AF_INET, text.c_str(), &address) == 1 && text != "0.0.0.0";
}

std::vector<std::string> zuvUtils::getIPv4Addresses() {
    std::vector<std::string> addresses;
    for (const zuvInterfaceAddress& entry : zuvHostIPv4Interfaces(kUtilsLogTag)) {
        if (entry.name != "lo" && entry.address != kLoopbackAddress) addresses.push_back(entry.address);
    }
    // The auxiliary address moves only when the address it holds has gone from the host.
    std::lock_guard<std::mutex> lock(ipv4AddressMutex);
    const bool stillThere = std::find(addresses.begin(), addresses.end(), auxIPv4Address) != addresses.end();
    if (auxIPv4Address.empty() || !stillThere)
        auxIPv4Address = addresses.empty() ? kLoopbackAddress : addresses.front();
    return addresses;
}

bool zuvUtils::setPrimaryIPv4Address(const std::vector<std::string>& addresses) {
    std::lock_guard<std::mutex> lock(ipv4AddressMutex);
    primaryIPv4Address = addresses.empty() ? kLoopbackAddress : addresses.front();
    return true;
}

std::string zuvUtils::getPrimaryIPv4Address() {
    // The emptiness test is made under the mutex too: a std::string can't be read safely
    // while another thread assigns it. The copies for the debug line are taken there as well.
    std::unique_lock<std::mutex> lock(ipv4AddressMutex);
    if (primaryIPv4Address.empty()) {
        if (auxIPv4Address.empty()) {
            lock.unlock();
            ZUV_LOG_DEBUG(kUtilsLogTag, "Get aux IPv4 address populated");
            getIPv4Addresses();  // fills auxIPv4Address
            lock.lock();
        }
        primaryIPv4Address = auxIPv4Address;
    }
    std::string result = primaryIPv4Address;
    const std::string primary = primaryIPv4Address;
    const std::string aux = auxIPv4Address;
    lock.unlock();
    ZUV_LOG_DEBUG(kUtilsLogTag, "primaryIPv4Address= %s auxIPv4Address=%s tempIP=%s", primary.c_str(), aux.c_str(),
                  result.c_str());
    return result;
}

std::vector<std::string> zuvUtils::refreshIPv4Addresses() {
    std::vector<std::string> addresses = getIPv4Addresses();
    setPrimaryIPv4Address(addresses);
    return addresses;
}

void zuvUtils::syncPersistentStorage() {
    zuvHostSyncPersistentStorage(kUtilsLogTag, [this](int error) { return errnoMessage(error); });
}
