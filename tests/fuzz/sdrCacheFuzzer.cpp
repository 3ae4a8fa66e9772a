// libFuzzer harness over the SDR cache through the IPMI device seam: the input is the device's
// answers, each a length byte and that many bytes; when it runs out, receives fail. A fresh cache
// is walked; exceptions report a failed channel, more records than answers is a finding.
#include <linux/ipmi.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <string_view>

#include "fuzzHarness.h"
#include "ipmi/zuvIPMIDeviceSystem.h"
#include "ipmi/zuvIPMIService.h"
#include "ipmi/zuvSDRRepositoryCache.h"

namespace {

struct AnsweringDevice : zuvIPMI::DeviceSystem {
    std::string_view rest;  // the answers not given yet
    size_t answers = 0;

    int openDevice(const char*, int) override { return 7; }
    int closeDevice(int) override { return 0; }
    int selectDevice(int, fd_set*, fd_set*, fd_set*, struct timeval*) override { return 1; }
    int runShell(const char*) override { return 0; }
    void sleepMicroseconds(uint64_t) override {}
    int ioctlDevice(int, unsigned long request, void* argument) override {
        if (request != IPMICTL_RECEIVE_MSG_TRUNC) return 0;
        if (rest.empty()) return -1;
        auto* received = static_cast<ipmi_recv*>(argument);
        const size_t length = std::min<size_t>(static_cast<uint8_t>(rest[0]), rest.size() - 1);
        std::memcpy(received->msg.data, rest.data() + 1, std::min<size_t>(length, received->msg.data_len));
        received->msg.data_len = static_cast<unsigned short>(length);
        rest.remove_prefix(1 + length);
        ++answers;
        return 0;
    }
};

AnsweringDevice device;

}  // namespace

extern "C" void zuvFuzzHarnessSetUp() { zuvIPMI::setDeviceSystem(&device); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    device.rest = std::string_view(reinterpret_cast<const char*>(data), size);
    device.answers = 0;
    zuvIPMIService service(64);
    zuvIPMI::SDRRepositoryCache cache(&service);
    try {
        const size_t records = static_cast<size_t>(cache.end() - cache.begin());
        if (records > device.answers) abort();  // every record took at least one Get SDR
    } catch (const std::exception&) {
    }
    return 0;
}
