// Running host tools and reading their output line by line.
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "log/zuvLogger.h"
#include "utils/zuvCommandPipe.h"
#include "vmware/zuvVMwareLogTag.h"
#include "vmware/zuvVMwareOSUtils.h"

std::vector<std::string> zuvVMwareOSUtils::runCommand(const std::string& command) {
    ZUV_LOG_DEBUG(kVMwareLogTag, "Command to be executed : [%s]", command.c_str());
    const zuvCommandPipe pipe = zuvOpenCommand(command);
    if (!pipe) {
        const int error = errno;
        ZUV_LOG_DEBUG(kVMwareLogTag, "popen() failed! : %s", strerror(error));
        return {};
    }
    return zuvReadPieces(pipe.get(), commandLineSize);
}

std::vector<std::string> zuvVMwareOSUtils::runCommandOrThrow(const std::string& command) {
    ZUV_LOG_DEBUG(kVMwareLogTag, "Command to be executed : [%s]", command.c_str());
    const zuvCommandPipe pipe = zuvOpenCommand(command);
    if (!pipe) {
        const int error = errno;
        ZUV_LOG_DEBUG(kVMwareLogTag, "popen() failed! : [%d - %s]", error, strerror(error));
        throw std::runtime_error(strerror(error));
    }
    return zuvReadPieces(pipe.get(), commandLineSize);
}
