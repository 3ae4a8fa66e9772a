#pragma once
// The process's one connection to the RMC over the IPMI device: the RMC's named commands in
// 60-byte blocks, the doorbell polls, and the standard commands of the SDR repository.

#include "ipmi/zuvInbandComInterface.h"
#include "ipmi/zuvIPMIServiceInterface.h"

#include <pthread.h>

#include <cstdint>
#include <functional>
#include <string>

#pragma pack(push, 1)
// One block of an RMC command: network function 0x3A, command 0x80, always 60 bytes.
struct zuvRmcCommandBlock {
    uint16_t index;
    uint8_t commandLength;  // 20 in the first block, 0 in every later one
    union {
        struct {
            char commandName[20];
            uint32_t argumentLength;  // the text's length plus its terminating NUL
            uint8_t data[33];
        } first;
        uint8_t data[57];
    };
};
// The RMC's answer to a block.
struct zuvRmcCommandReply {
    uint8_t transferStatus;
    uint16_t index;
    uint8_t cmdExitStatus;
};
#pragma pack(pop)
static_assert(sizeof(zuvRmcCommandBlock) == 60, "RMC command block");
static_assert(sizeof(zuvRmcCommandReply) == 4, "RMC command reply");

class zuvIPMIService : public zuvInbandIPMIBase, public zuvIPMI::IPMIServiceBase {
public:
    // The singleton, built at first use (maxMessageSize 64); a failed construction is tried
    // again, drivers and all, at the next call.
    static zuvInbandComInterface* getInstance();
    static zuvIPMI::IPMIServiceInterface* getIPMIServiceInstance();

    void execCommand(const std::string& command, const std::string& arguments) override;
    void deliverData(const std::string& command, const std::string& arguments,
                     std::function<void(int)> completion) override;
    int checkDoorBell(int kind) override;
    ~zuvIPMIService() override;

    void getDeviceID(zuvIPMI::DEVICE_ID_INFO& info) override;
    void getSDRRepositoryInfo(zuvIPMI::SDR_REPOSITORY_INFO& info) override;
    void reserveSDRRepository(uint16_t& reservationId) override;
    void getSDR(const zuvIPMI::GET_SDR_REQUEST& request, uint8_t* buffer, uint16_t capacity, uint16_t& size) override;

    // Opens the device, loading the drivers first if it isn't there.
    virtual void openChannel();

    // One request and its response on the device. responseSize comes in as the capacity of
    // responseData and goes out as the number of body bytes stored.
    void transfer(uint8_t netFn, uint8_t cmd, uint8_t lun, const void* requestData, uint16_t& requestSize,
                  void* responseData, uint16_t& responseSize, uint8_t* completionCode);

    // Logs a status pair of the RMC, by the table of normal ends or of failed transfers.
    static void reportStatus(uint8_t status, uint8_t exitStatus, bool transferFailed);

    // The process uses the singleton; programs that drive a simulated RMC through the device
    // seam build services of their own. maxMessageSize (a message's data, 7 bytes of which frame
    // a later block) must be 8 to 64: a later block then carries 1 to 57 bytes, what its record
    // holds. Any other size raises std::invalid_argument before the device is opened.
    explicit zuvIPMIService(int maxMessageSize);

private:
    static zuvIPMIService& instance();
    void sendBlocks(const uint8_t* buffer, uint32_t length, uint8_t& status, uint8_t& exitStatus);

    const char* devicePath = "/dev/ipmi0";
    zuvRmcCommandBlock request{};
    zuvRmcCommandReply reply{};
    int fd = -1;
    int maxMessageSize;
    pthread_mutex_t channelMutex = PTHREAD_MUTEX_INITIALIZER;
};
