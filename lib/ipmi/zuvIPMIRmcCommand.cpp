// Named RMC commands: the text goes in 60-byte blocks of network function 0x3A command 0x80,
// each block echoing the index of the RMC's previous reply.
#include "ipmi/ipmi_exceptions.h"
#include "ipmi/zuvIPMIDeviceSystem.h"
#include "ipmi/zuvIPMILogTag.h"
#include "ipmi/zuvIPMIService.h"
#include "log/zuvLogger.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {
const uint8_t kRmcNetFn = 0x3A;
const uint8_t kRmcCommand = 0x80;
const uint8_t kCommandNameSize = 20;
const uint32_t kFirstBlockData = 33;
const uint64_t kCommandPause = 500000;
}  // namespace

void zuvIPMIService::sendBlocks(const uint8_t* buffer, uint32_t length, uint8_t& status, uint8_t& exitStatus) {
    const uint32_t laterBlockData = static_cast<uint32_t>(maxMessageSize - 7);
    uint32_t sent = 0;
    do {
        request.index = reply.index;
        const bool first = sent == 0;
        uint8_t* data = first ? request.first.data : request.data;
        const uint32_t chunk = std::min(length - sent, first ? kFirstBlockData : laterBlockData);
        std::memcpy(data, buffer + sent, chunk);
        sent += chunk;
        uint16_t requestSize = sizeof request;
        uint16_t responseSize = sizeof reply;
        transfer(kRmcNetFn, kRmcCommand, 0, &request, requestSize, &reply, responseSize, nullptr);
        if (reply.transferStatus > 2) {
            status = reply.transferStatus;
            exitStatus = reply.cmdExitStatus;
        }
        std::memset(&request, 0, sizeof request);
    } while (sent < length);
}

void zuvIPMIService::execCommand(const std::string& command, const std::string& arguments) {
    uint8_t status = 0;
    uint8_t exitStatus = 0;
    std::memset(&request, 0, sizeof request);
    std::memset(&reply, 0, sizeof reply);
    uint8_t* buffer = nullptr;
    try {
        // A std::string always exists; what a caller can still get wrong is a name that the
        // 20-byte field can't hold with its NUL.
        if (command.size() >= kCommandNameSize) {
            ZUV_LOG_ERROR(ZUV_IPMI_TAG, "Provided command / arguments is not valid");
            throw ipmi_exceptions::invalid_arguments();
        }
        request.commandLength = kCommandNameSize;
        std::memcpy(request.first.commandName, command.c_str(), command.size());
        const uint32_t length = static_cast<uint32_t>(arguments.size()) + 1;
        request.first.argumentLength = length;
        buffer = static_cast<uint8_t*>(std::calloc(length + 21, 1));
        if (buffer == nullptr) {
            ZUV_LOG_ERROR(ZUV_IPMI_TAG, "Error while allocating memory for cmd buffer");
            throw ipmi_exceptions::memory_error();
        }
        std::strncpy(reinterpret_cast<char*>(buffer), arguments.c_str(), length);
        sendBlocks(buffer, length, status, exitStatus);
    } catch (...) {
        std::free(buffer);
        ZUV_LOG_ERROR(ZUV_IPMI_TAG, "RMC Cli Command Execution failed");
        reportStatus(status, exitStatus, true);
        throw std::exception();
    }
    zuvIPMI::deviceSystem().sleepMicroseconds(kCommandPause);
    std::free(buffer);
    reportStatus(status, exitStatus, false);
}

void zuvIPMIService::deliverData(const std::string& command, const std::string& arguments,
                                 std::function<void(int)> completion) {
    try {
        execCommand(std::string(command), std::string(arguments));
        ZUV_LOG_DEBUG(ZUV_IPMI_TAG, "Delivered Data through IPMI");
        if (completion) completion(0);
    } catch (...) {
        ZUV_LOG_DEBUG(ZUV_IPMI_TAG, "Failed to deliver data through IPMI");
        try {
            if (completion) completion(-1);
        } catch (...) {  // deliverData raises nothing, whatever the callback does
        }
    }
}

void zuvIPMIService::reportStatus(uint8_t status, uint8_t exitStatus, bool transferFailed) {
    if (transferFailed) {
        switch (status) {
            case 7: ZUV_LOG_ERROR(ZUV_IPMI_TAG, "Request ioctl failure"); break;
            case 8: ZUV_LOG_ERROR(ZUV_IPMI_TAG, "Response ioctl failure"); break;
            case 0xAA: ZUV_LOG_ERROR(ZUV_IPMI_TAG, "The pointer to the stdout or stderr is NULL."); break;
            case 0xDD: ZUV_LOG_ERROR(ZUV_IPMI_TAG, "Command time out."); break;
            case 0xEE: ZUV_LOG_ERROR(ZUV_IPMI_TAG, "The size of stdout or stderr is not enough."); break;
            default:
                ZUV_LOG_DEBUG(ZUV_IPMI_TAG, "Error occurred while executing RMC_CLI_Exec status=%d, cmd_exit_status=%d",
                              status, exitStatus);
        }
        return;
    }
    const char* meaning = nullptr;
    switch (status) {
        case 0: return;
        case 1: meaning = "Input data is not complete"; break;
        case 3: meaning = "Error in index"; break;
        case 4: meaning = "Cli entries full"; break;
        case 5: meaning = "Provided command not supported"; break;
        case 6: meaning = "Memory could not be allocated"; break;
        case 8:
            ZUV_LOG_ERROR(ZUV_IPMI_TAG,
                          "Transfer Status is 0x%x[Request command length exceeded] and Cmd Exit Status is 0x%x.",
                          status, exitStatus);
            return;
        default:
            ZUV_LOG_DEBUG(ZUV_IPMI_TAG, "RMC Cli Command Execution failed! (0x%x, 0x%x)", status, exitStatus);
            return;
    }
    ZUV_LOG_ERROR(ZUV_IPMI_TAG, "Transfer Status is 0x%x[%s] and Cmd Exit Status is 0x%x", status, meaning, exitStatus);
}
