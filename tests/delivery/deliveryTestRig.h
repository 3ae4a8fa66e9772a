#pragma once
// What the delivery and platform tests share: waits with a condition (never a sleep), and the
// manager's world: a simulated RMC behind the IPMI device seam, installed before the IPMI
// service is first built and never destroyed (the process's singletons use it until exit),
// and SMBIOS images at the host's SMBIOS device path.

#include <unistd.h>

#include <condition_variable>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/zuvSmbiosReader.h"
#include "zuvSandbox.h"
#include "zuvSimRmc.h"
#include "zuvSimRmcDevice.h"
#include "zuvSmbiosImage.h"
#include "zuvTestLog.h"

namespace deliverytest {

using zuvtest::kDebugLog;
using zuvtest::kMainLog;

// A door that tasks wait at until the test opens it.
struct Gate {
    std::promise<void> opener;
    std::shared_future<void> opened = opener.get_future().share();
    void open() { opener.set_value(); }
    void wait() { opened.wait(); }
};

// Numbers in the order tasks recorded them.
class Recorder {
public:
    void record(int value) {
        std::lock_guard<std::mutex> lock(mutex);
        values.push_back(value);
        changed.notify_all();
    }
    // Waits until count numbers are there; all of them.
    std::vector<int> waitFor(size_t count) {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [&] { return values.size() >= count; });
        return values;
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<int> values;
};

// Completion values tagged by the caller: tag * 10 + result.
inline std::function<void(int)> recordInto(Recorder& recorder, int tag) {
    return [&recorder, tag](int result) { recorder.record(tag * 10 + result); };
}

// Waits until another thread has logged a line holding text.
inline void waitForLog(const char* file, const std::string& text) {
    while (!zuvtest::logHolds(file, text)) std::this_thread::yield();
}

struct Rig {
    zuvsim::SimulatedRmc rmc;
    zuvsim::SimulatedRmcDevice device{rmc};
};

// The logger and the rig, built once per process.
inline Rig& rig() {
    static Rig* made = [] {
        zuvtest::startFileLogging();
        auto* built = new Rig();
        zuvIPMI::setDeviceSystem(&built->device);
        return built;
    }();
    return *made;
}

// An SMBIOS image whose system record has this family (none at all for an empty family),
// with no table held by the reader, so the next open takes it.
inline void installSmbios(const std::string& family) {
    rig();
    smbiosClose();
    if (family.empty()) {
        unlink(smbiosDevicePath);
        return;
    }
    const std::vector<uint8_t> bytes = zuvsim::SmbiosImage().addBios().addType1(family).bytes();
    zuvtest::writeFile(smbiosDevicePath, std::string(bytes.begin(), bytes.end()));
}

}  // namespace deliverytest
