#pragma once
// The standard IPMI commands that the service offers, and the records of their bodies.

#include <cstdint>

namespace zuvIPMI {

#pragma pack(push, 1)
struct DEVICE_ID_INFO {
    uint8_t deviceId;
    uint8_t deviceRevision;
    uint8_t firmwareRevision1;
    uint8_t firmwareRevision2;
    uint8_t ipmiVersion;
    uint8_t additionalDeviceSupport;
    uint8_t manufacturerId[3];
    uint8_t productId[2];
    uint8_t auxiliaryFirmwareRevision[4];
};

struct SDR_REPOSITORY_INFO {
    uint8_t sdrVersion;
    uint16_t recordCount;
    uint16_t freeSpace;
    uint32_t mostRecentAddition;
    uint32_t mostRecentErase;
    uint8_t operationSupport;
};

struct GET_SDR_REQUEST {
    uint16_t reservationId;
    uint16_t recordId;
    uint8_t offset;
    uint8_t bytesToRead;
};
#pragma pack(pop)

static_assert(sizeof(DEVICE_ID_INFO) == 15, "Get Device ID body");
static_assert(sizeof(SDR_REPOSITORY_INFO) == 14, "Get SDR Repository Info body");
static_assert(sizeof(GET_SDR_REQUEST) == 6, "Get SDR request");

class IPMIServiceInterface {
public:
    virtual void getDeviceID(DEVICE_ID_INFO& info) = 0;
    virtual void getSDRRepositoryInfo(SDR_REPOSITORY_INFO& info) = 0;
    virtual void reserveSDRRepository(uint16_t& reservationId) = 0;
    // Fills buffer with the 2 bytes of the next record id and the requested bytes of the record.
    virtual void getSDR(const GET_SDR_REQUEST& request, uint8_t* buffer, uint16_t capacity, uint16_t& size) = 0;
    virtual ~IPMIServiceInterface() = default;
};

class IPMIServiceBase : public IPMIServiceInterface {};

}  // namespace zuvIPMI
