#include "zuvSimRmcDevice.h"

#include <sys/ioctl.h>
#include <linux/ipmi.h>
#include <sys/select.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace zuvsim {
namespace {
// The numbers as the driver knows them, written out so that a wrong macro in the product shows.
const unsigned long kSendCommand = 0x8028690DUL;
const unsigned long kReceiveTruncated = 0xC030690BUL;
}  // namespace

SimulatedRmcDevice::SimulatedRmcDevice(SimulatedRmc& rmc, int deviceFd) : rmc(rmc), deviceFd(deviceFd) {}

void SimulatedRmcDevice::failNext(Step step, int count, int after) {
    std::lock_guard<std::mutex> lock(mutex);
    failures[step] = Failure{after, count};
}

void SimulatedRmcDevice::setDevicePresent(bool present, bool createdByMknod) {
    std::lock_guard<std::mutex> lock(mutex);
    devicePresent = present;
    mknodCreatesDevice = createdByMknod;
}

bool SimulatedRmcDevice::takeFailure(Step step) {
    auto found = failures.find(step);
    if (found == failures.end() || found->second.count <= 0) return false;
    if (found->second.after > 0) {
        --found->second.after;
        return false;
    }
    --found->second.count;
    return true;
}

int SimulatedRmcDevice::openDevice(const char* path, int openFlags) {
    std::lock_guard<std::mutex> lock(mutex);
    opened.emplace_back(path != nullptr ? path : "");
    flags.push_back(openFlags);
    if (takeFailure(Step::Open) || !devicePresent) {
        errno = ENOENT;
        return -1;
    }
    return deviceFd;
}

int SimulatedRmcDevice::closeDevice(int fd) {
    std::lock_guard<std::mutex> lock(mutex);
    closedFds.push_back(fd);
    if (fd != deviceFd) {
        errno = EBADF;
        return -1;
    }
    return 0;
}

int SimulatedRmcDevice::ioctlDevice(int fd, unsigned long request, void* argument) {
    std::unique_lock<std::mutex> lock(mutex);
    if (fd != deviceFd) {
        deviceFaults.push_back("ioctl on fd " + std::to_string(fd));
        errno = EBADF;
        return -1;
    }
    if (request == kSendCommand) return send(argument);
    if (request == kReceiveTruncated) return receive(argument);
    deviceFaults.push_back("unknown ioctl " + std::to_string(request));
    errno = ENOTTY;
    return -1;
}

// Reads the request as the driver does; the RMC logic answers at once and the response waits
// for the receive.
int SimulatedRmcDevice::send(void* argument) {
    const auto* request = static_cast<const ipmi_req*>(argument);
    SentRequest record;
    record.addrLen = request->addr_len;
    record.msgid = request->msgid;
    record.netFn = request->msg.netfn;
    record.cmd = request->msg.cmd;
    record.dataPointerNull = request->msg.data == nullptr;
    if (request->addr == nullptr || request->addr_len < sizeof(ipmi_system_interface_addr)) {
        deviceFaults.push_back("send without a system interface address");
        sentRequests.push_back(record);
        errno = EINVAL;
        return -1;
    }
    ipmi_system_interface_addr address;
    std::memcpy(&address, request->addr, sizeof address);
    record.addrType = address.addr_type;
    record.channel = address.channel;
    record.lun = address.lun;
    if (request->msg.data_len != 0) {
        if (request->msg.data == nullptr) {
            deviceFaults.push_back("send with a length and no data");
            sentRequests.push_back(record);
            errno = EFAULT;
            return -1;
        }
        record.data.assign(request->msg.data, request->msg.data + request->msg.data_len);
    }
    sentRequests.push_back(record);
    if (takeFailure(Step::Send)) {
        errno = EIO;
        return -1;
    }
    pending.push_back(
        Pending{record.msgid, record.netFn, record.cmd, rmc.handle(record.netFn, record.cmd, record.data)});
    pendingPeak = std::max(pendingPeak, pending.size());
    return 0;
}

int SimulatedRmcDevice::receive(void* argument) {
    auto* received = static_cast<ipmi_recv*>(argument);
    offered.emplace_back(received->addr_len, received->msg.data_len);
    if (pending.empty()) {
        errno = EAGAIN;
        return -1;
    }
    const Pending message = pending.front();
    pending.pop_front();
    if (takeFailure(Step::Receive)) {
        errno = EIO;
        return -1;
    }
    received->recv_type = IPMI_RESPONSE_RECV_TYPE;
    received->msgid = message.msgid;
    if (received->addr != nullptr && received->addr_len >= sizeof(ipmi_system_interface_addr)) {
        ipmi_system_interface_addr address{};
        address.addr_type = IPMI_SYSTEM_INTERFACE_ADDR_TYPE;
        address.channel = IPMI_BMC_CHANNEL;
        address.lun = 0;
        std::memcpy(received->addr, &address, sizeof address);
        received->addr_len = sizeof address;
    }
    received->msg.netfn = static_cast<unsigned char>(message.netFn + 1);
    received->msg.cmd = message.cmd;
    std::vector<uint8_t> bytes;
    if (!message.response.noData) {
        bytes.push_back(message.response.completionCode);
        bytes.insert(bytes.end(), message.response.body.begin(), message.response.body.end());
    }
    const size_t room = received->msg.data_len;
    const size_t copied = bytes.size() < room ? bytes.size() : room;
    if (copied != 0) std::memcpy(received->msg.data, bytes.data(), copied);
    received->msg.data_len = static_cast<unsigned short>(copied);
    if (copied < bytes.size()) {
        errno = EMSGSIZE;  // the truncating receive still delivers what fits
        return -1;
    }
    return 0;
}

int SimulatedRmcDevice::selectDevice(int nfds, fd_set* readSet, fd_set* writeSet, fd_set* errorSet,
                                     struct timeval* timeout) {
    std::lock_guard<std::mutex> lock(mutex);
    ++selectCalls;
    if (writeSet != nullptr || errorSet != nullptr || timeout != nullptr || nfds != deviceFd + 1)
        deviceFaults.push_back("select beyond the device's read set");
    // A failed wait loses the response it waited for, so that the next exchange starts clean.
    if (takeFailure(Step::Select)) {
        pending.clear();
        errno = EINTR;
        return -1;
    }
    const bool ready = !pending.empty() && !takeFailure(Step::SelectNotReady);
    if (!ready) pending.clear();
    if (readSet != nullptr) {
        const bool asked = FD_ISSET(deviceFd, readSet);
        FD_ZERO(readSet);
        if (asked && ready) {
            FD_SET(deviceFd, readSet);
            return 1;
        }
    }
    return 0;
}

int SimulatedRmcDevice::runShell(const char* command) {
    std::lock_guard<std::mutex> lock(mutex);
    const std::string text = command != nullptr ? command : "";
    shell.push_back(text);
    if (mknodCreatesDevice && text.rfind("mknod ", 0) == 0) devicePresent = true;
    return 0;
}

void SimulatedRmcDevice::sleepMicroseconds(uint64_t microseconds) {
    std::lock_guard<std::mutex> lock(mutex);
    pauses.push_back(microseconds);
}

std::vector<SentRequest> SimulatedRmcDevice::sent() const {
    std::lock_guard<std::mutex> lock(mutex);
    return sentRequests;
}

std::vector<std::pair<unsigned, unsigned>> SimulatedRmcDevice::receives() const {
    std::lock_guard<std::mutex> lock(mutex);
    return offered;
}

std::vector<std::string> SimulatedRmcDevice::shellCommands() const {
    std::lock_guard<std::mutex> lock(mutex);
    return shell;
}

std::vector<uint64_t> SimulatedRmcDevice::sleeps() const {
    std::lock_guard<std::mutex> lock(mutex);
    return pauses;
}

size_t SimulatedRmcDevice::selects() const {
    std::lock_guard<std::mutex> lock(mutex);
    return selectCalls;
}

size_t SimulatedRmcDevice::mostPending() const {
    std::lock_guard<std::mutex> lock(mutex);
    return pendingPeak;
}

std::vector<std::string> SimulatedRmcDevice::openedPaths() const {
    std::lock_guard<std::mutex> lock(mutex);
    return opened;
}

std::vector<int> SimulatedRmcDevice::openFlags() const {
    std::lock_guard<std::mutex> lock(mutex);
    return flags;
}

std::vector<int> SimulatedRmcDevice::closed() const {
    std::lock_guard<std::mutex> lock(mutex);
    return closedFds;
}

std::vector<std::string> SimulatedRmcDevice::faults() const {
    std::lock_guard<std::mutex> lock(mutex);
    return deviceFaults;
}

void SimulatedRmcDevice::clearRecord() {
    std::lock_guard<std::mutex> lock(mutex);
    sentRequests.clear();
    offered.clear();
    shell.clear();
    pauses.clear();
    selectCalls = 0;
    pendingPeak = 0;
    opened.clear();
    flags.clear();
    closedFds.clear();
    deviceFaults.clear();
}

}  // namespace zuvsim
