#pragma once
// Shared by the delivery and platform tests: a recorder to wait on (never a sleep), and a simulated
// RMC behind the IPMI device seam, installed before the IPMI service is first built and never
// destroyed (the process's singletons use it until exit), with SMBIOS images at the device path.

#include <unistd.h>

#include <condition_variable>
#include <future>

#include "platform/zuvSmbiosReader.h"
#include "zuvSandbox.h"
#include "zuvSimRmcDevice.h"
#include "zuvSmbiosImage.h"
#include "zuvTestLog.h"

namespace deliverytest {

using Strings = std::vector<std::string>;

// Numbers in the order tasks recorded them, and a gate where tasks wait until it opens.
class Recorder {
public:
    void record(int value) {
        std::lock_guard<std::mutex> lock(mutex);
        values.push_back(value);
        changed.notify_all();
    }
    std::vector<int> waitFor(size_t count) {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [&] { return values.size() >= count; });
        return values;
    }
    // A completion that records tag * 10 + its result.
    std::function<void(int)> into(int tag) {
        return [this, tag](int result) { record(tag * 10 + result); };
    }
    // Records tag and waits until the gate opens.
    void hold(int tag) {
        record(tag);
        opened.wait();
    }
    void open() { opener.set_value(); }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<int> values;
    std::promise<void> opener;
    std::shared_future<void> opened = opener.get_future().share();
};

// The text of what the call throws.
template <typename Call>
std::string failureOf(Call call) {
    try {
        call();
    } catch (const std::exception& e) {
        return e.what();
    }
    return "no failure";
}

struct Rig {
    zuvsim::SimulatedRmc rmc;
    zuvsim::SimulatedRmcDevice device{rmc};
};

inline Rig& rig() {
    static Rig* made = [] {
        zuvtest::startFileLogging();
        auto* built = new Rig();
        zuvIPMI::setDeviceSystem(&built->device);
        return built;
    }();
    return *made;
}

// An SMBIOS image whose system record has this family (no device at all for an empty family),
// with no table held by the reader, so the next open reads it.
inline void installSmbios(const std::string& family) {
    rig();
    smbiosClose();
    unlink(smbiosDevicePath);
    const std::vector<uint8_t> bytes = zuvsim::SmbiosImage().addBios().addType1(family).bytes();
    if (!family.empty()) zuvtest::writeFile(smbiosDevicePath, std::string(bytes.begin(), bytes.end()));
}

}  // namespace deliverytest
