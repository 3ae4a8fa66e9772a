// The device channel: opening /dev/ipmi0 and the one synchronous request/response exchange.
#include "ipmi/zuvIPMIService.h"

#include "ipmi/ipmi_exceptions.h"
#include "ipmi/zuvIPMIDeviceSystem.h"
#include "ipmi/zuvIPMILogTag.h"
#include "log/zuvLogger.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <linux/ipmi.h>
#include <sys/select.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

static_assert(IPMICTL_SEND_COMMAND == 0x8028690D, "ioctl number of IPMICTL_SEND_COMMAND");
static_assert(IPMICTL_RECEIVE_MSG_TRUNC == 0xC030690B, "ioctl number of IPMICTL_RECEIVE_MSG_TRUNC");

namespace {

const char* const kDriverCommands[] = {
    "modprobe ipmi_msghandler > /dev/null 2>&1",
    "modprobe ipmi_si > /dev/null 2>&1",
    "modprobe ipmi_devintf > /dev/null 2>&1",
    "modprobe ipmi_watchdog > /dev/null 2>&1",
    "modprobe ipmi_ssif > /dev/null 2>&1",
    "mknod -m 0600 /dev/ipmi0 c `cat /proc/devices | grep ipmidev |cut -d \" \" -f 1` 0 > /dev/null 2>&1",
};
const uint64_t kDriverLoadPause = 3000000;
// A later block carries maxMessageSize less 7 bytes of data: at least one, and no more than its record holds.
const int kMinMessageSize = 8;
const int kMaxMessageSize = 64;
static_assert(sizeof(zuvRmcCommandBlock::data) == kMaxMessageSize - 7, "data of a later block");
const size_t kResponseAddressSize = 40;
const size_t kResponseDataSize = 272;

// Holds channelMutex for one exchange and releases it on every way out.
class ChannelLock {
public:
    explicit ChannelLock(pthread_mutex_t& mutex) : mutex(mutex) { pthread_mutex_lock(&mutex); }
    ~ChannelLock() { pthread_mutex_unlock(&mutex); }
    ChannelLock(const ChannelLock&) = delete;
    ChannelLock& operator=(const ChannelLock&) = delete;

private:
    pthread_mutex_t& mutex;
};

}  // namespace

zuvIPMIService& zuvIPMIService::instance() {
    static zuvIPMIService service(64);
    return service;
}

zuvInbandComInterface* zuvIPMIService::getInstance() { return &instance(); }

zuvIPMI::IPMIServiceInterface* zuvIPMIService::getIPMIServiceInstance() { return &instance(); }

zuvIPMIService::zuvIPMIService(int maxMessageSize) : maxMessageSize(maxMessageSize) {
    if (maxMessageSize < kMinMessageSize || maxMessageSize > kMaxMessageSize) {
        ZUV_LOG_ERROR(ZUV_IPMI_TAG, "IPMI message size %d is outside %d to %d", maxMessageSize, kMinMessageSize,
                      kMaxMessageSize);
        throw std::invalid_argument("IPMI message size out of range");
    }
    try {
        // Named with its class: a constructor runs this class's own version in any case.
        zuvIPMIService::openChannel();
    } catch (...) {
        ZUV_LOG_ERROR(ZUV_IPMI_TAG, "Unable to Open IPMI channel - Bailing out");
        throw std::runtime_error("IPMI - Connection - Failed");
    }
}

zuvIPMIService::~zuvIPMIService() {
    if (fd >= 0) zuvIPMI::deviceSystem().closeDevice(fd);
}

void zuvIPMIService::openChannel() {
    zuvIPMI::DeviceSystem& system = zuvIPMI::deviceSystem();
    fd = -1;
    fd = system.openDevice(devicePath, O_RDWR);
    if (fd >= 0) return;
    for (const char* command : kDriverCommands) system.runShell(command);
    system.sleepMicroseconds(kDriverLoadPause);
    fd = system.openDevice(devicePath, O_RDWR);
    if (fd < 0) throw std::runtime_error("IPMI - Connection - Failed");
}

void zuvIPMIService::transfer(uint8_t netFn, uint8_t cmd, uint8_t lun, const void* requestData, uint16_t& requestSize,
                              void* responseData, uint16_t& responseSize, uint8_t* completionCode) {
    ZUV_LOG_DEBUG(ZUV_IPMI_TAG, "Transfer data through IPMI: rq [%hu %02x %02x %02x]; rp [%hu]", requestSize, netFn,
                  cmd, lun, responseSize);
    if (fd < 0) throw ipmi_exceptions::invalid_handle();
    ChannelLock lock(channelMutex);
    zuvIPMI::DeviceSystem& system = zuvIPMI::deviceSystem();
    try {
        ZUV_LOG_DEBUG(ZUV_IPMI_TAG, "  Sending data through IPMI");
        ipmi_system_interface_addr address{};
        address.addr_type = IPMI_SYSTEM_INTERFACE_ADDR_TYPE;
        address.channel = IPMI_BMC_CHANNEL;
        address.lun = 0;
        ipmi_req sendRequest{};
        sendRequest.addr = reinterpret_cast<unsigned char*>(&address);
        sendRequest.addr_len = sizeof address;
        sendRequest.msgid = 0;
        sendRequest.msg.netfn = netFn;
        sendRequest.msg.cmd = cmd;
        sendRequest.msg.data_len = requestSize;
        sendRequest.msg.data = requestSize != 0 ? static_cast<unsigned char*>(const_cast<void*>(requestData)) : nullptr;
        const int sent = system.ioctlDevice(fd, IPMICTL_SEND_COMMAND, &sendRequest);
        if (sent != 0) {
            ZUV_LOG_ERROR(ZUV_IPMI_TAG, "  Request ioctl failure with error code : %d", sent);
            throw ipmi_exceptions::send_error();
        }

        ZUV_LOG_DEBUG(ZUV_IPMI_TAG, "  Waiting for IPMI channel");
        // A descriptor beyond the fixed-size set can't be waited on: FD_SET would write outside it.
        if (fd >= FD_SETSIZE) throw ipmi_exceptions::wait_fd_free_failed();
        fd_set readSet;
        FD_ZERO(&readSet);
        FD_SET(fd, &readSet);
        if (system.selectDevice(fd + 1, &readSet, nullptr, nullptr, nullptr) < 0)
            throw ipmi_exceptions::wait_fd_free_failed();
        if (!FD_ISSET(fd, &readSet)) throw ipmi_exceptions::wait_error();

        unsigned char responseAddress[kResponseAddressSize] = {};
        unsigned char data[kResponseDataSize] = {};
        ipmi_recv received{};
        received.addr = responseAddress;
        received.addr_len = sizeof responseAddress;
        received.msg.data = data;
        received.msg.data_len = sizeof data;
        if (system.ioctlDevice(fd, IPMICTL_RECEIVE_MSG_TRUNC, &received) < 0) {
            ZUV_LOG_ERROR(ZUV_IPMI_TAG, "  Unable to read acknowlegement : %d", 1);
            throw ipmi_exceptions::no_ack();
        }
        // The kernel never reports more than the buffer holds; a length beyond it is not trusted.
        const uint32_t dataLength = std::min<uint32_t>(received.msg.data_len, sizeof data);
        const uint32_t size = std::min<uint32_t>(responseSize + 1u, dataLength);
        ZUV_LOG_DEBUG(ZUV_IPMI_TAG, "  Read IPMI Ack: size %d, rs %d, dl %d", static_cast<int>(size),
                      static_cast<int>(responseSize), static_cast<int>(received.msg.data_len));
        if (size != 0) {
            if (completionCode != nullptr) *completionCode = data[0];
            responseSize = static_cast<uint16_t>(size - 1);
            if (responseSize != 0) std::memcpy(responseData, data + 1, responseSize);
        }
    } catch (const std::exception& e) {
        ZUV_LOG_ERROR(ZUV_IPMI_TAG, "IPMI exec failed %s", e.what());
        throw std::exception();
    }
}
