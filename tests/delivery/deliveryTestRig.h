#pragma once
// Shared by the delivery and platform tests: a recorder to wait on, a simulated RMC, SMBIOS images.

#include <unistd.h>

#include <condition_variable>
#include <future>

#include "platform/zuvSmbiosReader.h"
#include "zuvSandbox.h"
#include "zuvSimRmcDevice.h"
#include "zuvSmbiosImage.h"
#include "zuvProcess.h"
#include "zuvTestLog.h"

namespace deliverytest {

using Strings = std::vector<std::string>;
using zuvtest::thrown;

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
    std::function<void(int)> into(int tag) {
        return [this, tag](int result) { record(tag * 10 + result); };
    }
    // Records tag and waits until the gate opens: a task that keeps its worker busy.
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

struct Rig {
    zuvsim::SimulatedRmc rmc;
    zuvsim::SimulatedRmcDevice device{rmc};
    Rig() { zuvIPMI::setDeviceSystem(&device); }
};

// The logger and the rig, once per process, before the IPMI service is built; never destroyed, as
// the singletons use it until exit.
inline Rig& rig() {
    static Rig* made = (zuvtest::startFileLogging(), new Rig());
    return *made;
}

// The SMBIOS device holds these bytes, and no table is held by the reader, so the next open reads them.
inline void installImage(const std::vector<uint8_t>& bytes) {
    smbiosClose();
    zuvtest::writeFile(smbiosDevicePath, std::string(bytes.begin(), bytes.end()));
}

// An image whose system record has this family; no device at all for an empty family.
inline void installSmbios(const std::string& family) {
    rig();
    installImage(zuvsim::SmbiosImage().addBios().addType1(family).bytes());
    if (family.empty()) unlink(smbiosDevicePath);
}

}  // namespace deliverytest
