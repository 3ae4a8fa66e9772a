#include "vmware/zuvHostCalls.h"

#include "log/zuvLogger.h"
#include "vmware/zuvHostSystem.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <sys/utsname.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {
// strerror_r comes in a GNU form (returns the text) and an XSI form (fills the buffer).
[[maybe_unused]] const char* errorTextOf(int result, const char* buffer) { return result == 0 ? buffer : ""; }
[[maybe_unused]] const char* errorTextOf(const char* result, const char*) { return result; }

bool unameOrLog(struct utsname& name, const char* tag) {
    if (zuvCurrentHostSystem().uname(&name) == 0) return true;
    ZUV_LOG_ERROR(tag, "uname failed with error = %d", errno);
    return false;
}
}  // namespace

std::string zuvErrnoText(int errorNumber, size_t bufferSize) {
    std::string buffer(bufferSize, '\0');
    const char* text = errorTextOf(strerror_r(errorNumber, &buffer[0], bufferSize), buffer.data());
    return std::string(text, strnlen(text, bufferSize - 1));
}

std::string zuvHostNodeName(const char* tag) {
    struct utsname name {};
    return unameOrLog(name, tag) ? std::string(name.nodename) : std::string(" ");
}

std::string zuvHostKernelLine(const char* tag) {
    struct utsname name {};
    if (!unameOrLog(name, tag)) return " ";
    return std::string(name.sysname) + " " + name.nodename + " " + name.release + " " + name.version + " " +
           name.machine;
}

void zuvHostSyncPersistentStorage(const char* tag, const std::function<std::string(int)>& errorText) {
    const int result = system("/bin/vim-cmd hostsvc/firmware/sync_config");
    if (result < 0) {
        const int error = errno;
        ZUV_LOG_WARNING(tag, "Failed to synchronize persistent storage: [%d] - [%s]", error, errorText(error).c_str());
    } else if (result > 0) {
        ZUV_LOG_WARNING(tag, "Failed to synchronize persistent storage. (0x%X)", static_cast<unsigned>(result));
    }
}

std::vector<zuvInterfaceAddress> zuvHostIPv4Interfaces(const char* tag) {
    zuvHostSystem& host = zuvCurrentHostSystem();
    struct ifaddrs* list = nullptr;
    if (host.getifaddrs(&list) != 0) return {};
    // The list goes back on every way out, an exception included.
    struct Release {
        zuvHostSystem& host;
        struct ifaddrs* list;
        ~Release() { host.freeifaddrs(list); }
    } release{host, list};
    std::vector<zuvInterfaceAddress> found;
    for (struct ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
        if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_INET) continue;
        char text[INET_ADDRSTRLEN] = {};
        inet_ntop(AF_INET, &reinterpret_cast<const struct sockaddr_in*>(entry->ifa_addr)->sin_addr, text, sizeof text);
        const char* name = entry->ifa_name ? entry->ifa_name : "";
        ZUV_LOG_DEBUG(tag, "I/F Name: [%s] - IP Address: [%s]", name, text);
        found.push_back({name, text});
    }
    return found;
}
