#include "ipmi/zuvIPMIDeviceSystem.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>

namespace zuvIPMI {
namespace {

class RealDeviceSystem : public DeviceSystem {
public:
    int openDevice(const char* path, int flags) override { return ::open(path, flags); }
    int closeDevice(int fd) override { return ::close(fd); }
    int ioctlDevice(int fd, unsigned long request, void* argument) override { return ::ioctl(fd, request, argument); }
    int selectDevice(int nfds, fd_set* readSet, fd_set* writeSet, fd_set* errorSet, struct timeval* timeout) override {
        return ::select(nfds, readSet, writeSet, errorSet, timeout);
    }
    int runShell(const char* command) override { return std::system(command); }
    void sleepMicroseconds(uint64_t microseconds) override { ::usleep(static_cast<useconds_t>(microseconds)); }
};

std::atomic<DeviceSystem*> installed{nullptr};

}  // namespace

DeviceSystem& realDeviceSystem() {
    static RealDeviceSystem real;
    return real;
}

DeviceSystem& deviceSystem() {
    DeviceSystem* system = installed.load();
    return system != nullptr ? *system : realDeviceSystem();
}

void setDeviceSystem(DeviceSystem* system) { installed.store(system); }

}  // namespace zuvIPMI
