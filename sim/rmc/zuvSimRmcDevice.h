#pragma once
// The device seam with a simulated RMC behind it: the kernel records that the IPMI service
// fills are read here as the Linux IPMI driver would read them, turned into calls of the RMC
// logic, and its answers written back as the driver writes them (msgid echoed, the response
// cut to the caller's buffer with EMSGSIZE as IPMICTL_RECEIVE_MSG_TRUNC does). The open, both
// ioctls and select fail on request; shell commands and pauses are recorded, never run.

#include "ipmi/zuvIPMIDeviceSystem.h"
#include "zuvSimRmc.h"

#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace zuvsim {

// One IPMICTL_SEND_COMMAND as the driver saw it.
struct SentRequest {
    int addrType = 0;
    short channel = 0;
    unsigned char lun = 0;
    unsigned int addrLen = 0;
    long msgid = 0;
    uint8_t netFn = 0;
    uint8_t cmd = 0;
    bool dataPointerNull = false;
    std::vector<uint8_t> data;
};

class SimulatedRmcDevice : public zuvIPMI::DeviceSystem {
public:
    enum class Step { Open, Send, Select, SelectNotReady, Receive };

    explicit SimulatedRmcDevice(SimulatedRmc& rmc, int deviceFd = 5);

    // After `after` good calls, the next `count` calls of the step fail (Open: ENOENT, Send:
    // -1 with EIO, Select: -1 with EINTR, SelectNotReady: 0 with an empty set, Receive: -1 with
    // EIO, the pending response dropped).
    void failNext(Step step, int count = 1, int after = 0);
    // Without the device node every open fails; the driver-loading mknod command creates it
    // when `mknodCreatesDevice` is set.
    void setDevicePresent(bool present, bool mknodCreatesDevice = false);

    std::vector<SentRequest> sent() const;
    // For each IPMICTL_RECEIVE_MSG_TRUNC, the room the caller offered: address and data length.
    std::vector<std::pair<unsigned, unsigned>> receives() const;
    std::vector<std::string> shellCommands() const;
    std::vector<uint64_t> sleeps() const;
    size_t selects() const;
    // The most answers that waited to be received at one time: 1 while exchanges don't overlap.
    size_t mostPending() const;
    std::vector<std::string> openedPaths() const;
    std::vector<int> openFlags() const;
    std::vector<int> closed() const;
    // What the driver would refuse: an unknown ioctl number, a record it can't read, a select
    // beyond the device's read set or with a time-out.
    std::vector<std::string> faults() const;
    void clearRecord();

    int openDevice(const char* path, int flags) override;
    int closeDevice(int fd) override;
    int ioctlDevice(int fd, unsigned long request, void* argument) override;
    int selectDevice(int nfds, fd_set* readSet, fd_set* writeSet, fd_set* errorSet, struct timeval* timeout) override;
    int runShell(const char* command) override;
    void sleepMicroseconds(uint64_t microseconds) override;

private:
    struct Pending {
        long msgid;
        uint8_t netFn;
        uint8_t cmd;
        Response response;
    };

    bool takeFailure(Step step);
    int send(void* argument);
    int receive(void* argument);

    SimulatedRmc& rmc;
    const int deviceFd;
    mutable std::mutex mutex;
    struct Failure {
        int after;
        int count;
    };
    std::map<Step, Failure> failures;
    bool devicePresent = true;
    bool mknodCreatesDevice = false;
    std::deque<Pending> pending;
    std::vector<SentRequest> sentRequests;
    std::vector<std::pair<unsigned, unsigned>> offered;
    std::vector<std::string> shell;
    std::vector<uint64_t> pauses;
    size_t selectCalls = 0;
    size_t pendingPeak = 0;
    std::vector<std::string> opened;
    std::vector<int> flags;
    std::vector<int> closedFds;
    std::vector<std::string> deviceFaults;
};

}  // namespace zuvsim
