// Get Device ID, Get SDR Repository Info, Reserve SDR Repository and Get SDR.
#include "ipmi/zuvIPMIExceptions.h"
#include "ipmi/zuvIPMILogTag.h"
#include "ipmi/zuvIPMIService.h"
#include "log/zuvLogger.h"
#include "utils/zuvStringUtils.h"

#include <cstring>

namespace {

struct SimpleCommand {
    uint8_t netFn;
    uint8_t cmd;
    const char* name;
    const char* ccLine;
    const char* sizeLine;
    const char* dataLine;
};

const SimpleCommand kGetDeviceId{0x06,
                                 0x01,
                                 "Get Device ID",
                                 "Get Device ID finished with CC: [0x%02x]",
                                 "Insufficient Get Device ID response data size [%hu]. Expected [%zu].",
                                 "Get Device ID Response Data: [%s]"};
const SimpleCommand kGetRepositoryInfo{0x0A,
                                       0x20,
                                       "Get SDR Repository Info",
                                       "Get SDR Repository Info finished with CC: [0x%02x]",
                                       "Insufficient Get SDR Repository Info response data size [%hu]. Expected [%zu].",
                                       "Get SDR Repository Info - Response Data: [%s]"};
const SimpleCommand kReserveRepository{0x0A,
                                       0x22,
                                       "Reserve SDR Repository",
                                       "Reserve SDR Repository finished with CC: [0x%02x]",
                                       "Insufficient Reserve SDR Repository response data size [%hu]. Expected [%zu].",
                                       "Reserve SDR Repository - Response Data: [%s]"};

const uint8_t kInvalidReservation = 0xC5;

// The three commands without request data share their steps: the completion code is tested
// before the size, and the preset 0xFF makes an answer without data a failure.
template <typename Record>
void runSimpleCommand(zuvIPMIService& service, const SimpleCommand& command, Record& record) {
    std::memset(&record, 0, sizeof record);
    uint16_t requestSize = 0;
    uint16_t responseSize = sizeof record;
    uint8_t code = 0xFF;
    service.transfer(command.netFn, command.cmd, 0, nullptr, requestSize, &record, responseSize, &code);
    if (code != 0) {
        ZUV_LOG_DEBUG(ZUV_IPMI_TAG, command.ccLine, code);
        throw zuvIPMI::IPMICommandFailureException(code);
    }
    if (responseSize < sizeof record) {
        ZUV_LOG_DEBUG(ZUV_IPMI_TAG, command.sizeLine, responseSize, sizeof record);
        throw zuvIPMI::InvalidResponseDataSizeException(command.name);
    }
    ZUV_LOG_DEBUG(ZUV_IPMI_TAG, command.dataLine,
                  zuvStringUtils::bytesToHexString(reinterpret_cast<const uint8_t*>(&record), responseSize).c_str());
}

}  // namespace

void zuvIPMIService::getDeviceID(zuvIPMI::DEVICE_ID_INFO& info) { runSimpleCommand(*this, kGetDeviceId, info); }

void zuvIPMIService::getSDRRepositoryInfo(zuvIPMI::SDR_REPOSITORY_INFO& info) {
    runSimpleCommand(*this, kGetRepositoryInfo, info);
}

void zuvIPMIService::reserveSDRRepository(uint16_t& reservationId) {
    runSimpleCommand(*this, kReserveRepository, reservationId);
}

void zuvIPMIService::getSDR(const zuvIPMI::GET_SDR_REQUEST& sdrRequest, uint8_t* buffer, uint16_t capacity,
                            uint16_t& size) {
    if (capacity != 0) std::memset(buffer, 0, capacity);
    size = 0;
    uint8_t code = 0xFF;
    const auto* requestBytes = reinterpret_cast<const uint8_t*>(&sdrRequest);
    ZUV_LOG_DEBUG(ZUV_IPMI_TAG, "Get SDR - Request Data: [%s]",
                  zuvStringUtils::bytesToHexString(requestBytes, sizeof sdrRequest).c_str());
    uint16_t requestSize = sizeof sdrRequest;
    uint16_t responseSize = capacity;
    transfer(0x0A, 0x23, 0, requestBytes, requestSize, buffer, responseSize, &code);
    if (code == kInvalidReservation) {
        ZUV_LOG_DEBUG(ZUV_IPMI_TAG, "Get SDR failed due to invalid reservation!");
        throw zuvIPMI::SDRRepositoryReservationNotValidException();
    }
    if (code != 0) {
        ZUV_LOG_DEBUG(ZUV_IPMI_TAG, "Get SDR finished with CC: [0x%02x]", code);
        throw zuvIPMI::IPMICommandFailureException(code);
    }
    size = responseSize;
    ZUV_LOG_DEBUG(ZUV_IPMI_TAG, "Get SDR - Response Data: [%s]",
                  zuvStringUtils::bytesToHexString(buffer, size).c_str());
}
