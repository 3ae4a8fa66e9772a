#pragma once
// The uname and vim-cmd calls that both zuvUtils and zuvVMwareOSUtils offer; each class logs
// them under its own tag and words its own error texts.

#include <functional>
#include <string>

// The node name, or " " when uname fails (logged at error level under tag).
std::string zuvHostNodeName(const char* tag);
// "sysname nodename release version machine", or " " when uname fails.
std::string zuvHostKernelLine(const char* tag);
// Runs "/bin/vim-cmd hostsvc/firmware/sync_config"; a failure is a warning under tag.
void zuvHostSyncPersistentStorage(const char* tag, const std::function<std::string(int)>& errorText);
