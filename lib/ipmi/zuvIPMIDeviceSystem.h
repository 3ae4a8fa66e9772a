#pragma once
// The system calls through which the IPMI service reaches the kernel's IPMI device, the shell
// that loads its drivers, and the pauses it takes. The default is the real system; tests put
// a simulated management processor behind the same calls.

#include <sys/select.h>

#include <cstdint>

namespace zuvIPMI {

class DeviceSystem {
public:
    virtual ~DeviceSystem() = default;
    virtual int openDevice(const char* path, int flags) = 0;
    virtual int closeDevice(int fd) = 0;
    // ioctl(fd, request, argument) for IPMICTL_SEND_COMMAND and IPMICTL_RECEIVE_MSG_TRUNC.
    virtual int ioctlDevice(int fd, unsigned long request, void* argument) = 0;
    virtual int selectDevice(int nfds, fd_set* readSet, fd_set* writeSet, fd_set* errorSet,
                             struct timeval* timeout) = 0;
    virtual int runShell(const char* command) = 0;
    virtual void sleepMicroseconds(uint64_t microseconds) = 0;
};

// The real system: open, close, ioctl, select, system, usleep.
DeviceSystem& realDeviceSystem();
// The calls the service makes; the real system unless a test installed another.
DeviceSystem& deviceSystem();
// Installs `system` for the process (null restores the real one). Must come before the
// service's first use.
void setDeviceSystem(DeviceSystem* system);

}  // namespace zuvIPMI
