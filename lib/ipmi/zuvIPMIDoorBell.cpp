// Doorbell polls: the RMC leaves requests for the host, and the host asks for them by kind.
#include "ipmi/zuvIPMILogTag.h"
#include "ipmi/zuvIPMIService.h"
#include "log/zuvLogger.h"

#include <cstring>
#include <string>

namespace {
const uint8_t kRmcNetFn = 0x3A;
const size_t kDoorBellBufferSize = 254;

uint8_t commandOfKind(int kind) {
    switch (kind) {
        case DoorBellInventory: return 0x81;
        case DoorBellTelemetry: return 0x82;
        case DoorBellIOFWU: return 0x83;
        default: return 0;
    }
}
}  // namespace

int zuvIPMIService::checkDoorBell(int kind) {
    uint8_t buffer[kDoorBellBufferSize] = {};
    ZUV_LOG_DEBUG(ZUV_IPMI_TAG, "Checking IPMI door bell request");
    try {
        const uint8_t command = commandOfKind(kind);
        if (command != 0) {
            uint16_t requestSize = 0;
            uint16_t responseSize = sizeof buffer;
            transfer(kRmcNetFn, command, 0, nullptr, requestSize, buffer, responseSize, nullptr);
        }
        // A full response holds no terminator: the text ends at the buffer's end at the latest.
        const char* text = reinterpret_cast<const char*>(buffer);
        const std::string doorBell(text, strnlen(text, sizeof buffer));
        ZUV_LOG_DEBUG(ZUV_IPMI_TAG, "Received doorbell string (%s)", doorBell.c_str());
        switch (kind) {
            case DoorBellTelemetry: {
                uint32_t cmd = 0;
                std::memcpy(&cmd, buffer, sizeof cmd);
                const int level = buffer[4];
                ZUV_LOG_DEBUG(ZUV_IPMI_TAG, "Received Telemetry doorbell string (%s) cmd (%d), cmd_level(%d)",
                              doorBell.c_str(), static_cast<int>(cmd), level);
                if (cmd == 1) return 1;
                if (cmd != 0) {
                    ZUV_LOG_WARNING(ZUV_IPMI_TAG,
                                    "Received Unsupported telemetry doorbell string (%s) cmd (%d), cmd_level(%d)",
                                    doorBell.c_str(), static_cast<int>(cmd), level);
                }
                return 2;
            }
            case DoorBellIOFWU:
                ZUV_LOG_DEBUG(ZUV_IPMI_TAG, "IOFWU doorbell string (%d) (%d) ", buffer[0], buffer[1]);
                return buffer[0];
            case DoorBellInventory: return doorBell.find("WriteInventory") != std::string::npos ? 1 : 0;
            default: ZUV_LOG_WARNING(ZUV_IPMI_TAG, "Invalid Doorbell request [%d]", kind); return 0;
        }
    } catch (...) {
        ZUV_LOG_ERROR(ZUV_IPMI_TAG, "An error occurred in checking RMC request via IPMI");
        return 0;
    }
}
