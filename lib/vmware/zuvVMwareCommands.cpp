// Running host tools and reading their output line by line.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "log/zuvLogger.h"
#include "vmware/zuvVMwareLogTag.h"
#include "vmware/zuvVMwareOSUtils.h"

namespace {

// Reads every fgets() piece of the command's output; the pipe is closed in any case.
std::vector<std::string> readPieces(FILE* pipe, int bufferSize) {
    std::vector<std::string> lines;
    std::unique_ptr<char[]> buffer(new char[bufferSize > 1 ? bufferSize : 2]);
    while (fgets(buffer.get(), bufferSize > 1 ? bufferSize : 2, pipe) != nullptr) lines.emplace_back(buffer.get());
    pclose(pipe);
    return lines;
}

}  // namespace

std::vector<std::string> zuvVMwareOSUtils::runCommand(const std::string& command) {
    ZUV_LOG_DEBUG(kVMwareLogTag, "Command to be executed : [%s]", command.c_str());
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        const int error = errno;
        ZUV_LOG_DEBUG(kVMwareLogTag, "popen() failed! : %s", strerror(error));
        return {};
    }
    return readPieces(pipe, commandLineSize);
}

std::vector<std::string> zuvVMwareOSUtils::runCommandOrThrow(const std::string& command) {
    ZUV_LOG_DEBUG(kVMwareLogTag, "Command to be executed : [%s]", command.c_str());
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        const int error = errno;
        ZUV_LOG_DEBUG(kVMwareLogTag, "popen() failed! : [%d - %s]", error, strerror(error));
        throw std::runtime_error(strerror(error));
    }
    return readPieces(pipe, commandLineSize);
}
