#pragma once
// The uname, getifaddrs and vim-cmd calls that both zuvUtils and zuvVMwareOSUtils offer; each
// class logs them under its own tag and words its own error texts.

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// The text of an errno value, cut to bufferSize - 1 characters as strerror_r gives it.
std::string zuvErrnoText(int errorNumber, size_t bufferSize);
// The node name, or " " when uname fails (logged at error level under tag).
std::string zuvHostNodeName(const char* tag);
// "sysname nodename release version machine", or " " when uname fails.
std::string zuvHostKernelLine(const char* tag);
// Runs "/bin/vim-cmd hostsvc/firmware/sync_config"; a failure is a warning under tag.
void zuvHostSyncPersistentStorage(const char* tag, const std::function<std::string(int)>& errorText);

struct zuvInterfaceAddress {
    std::string name;     // interface name
    std::string address;  // dotted IPv4 text
};
// The IPv4 addresses of the host's interfaces in the order of getifaddrs(), each logged at
// debug level under tag; empty when getifaddrs() fails. The list is freed on every way out.
std::vector<zuvInterfaceAddress> zuvHostIPv4Interfaces(const char* tag);
