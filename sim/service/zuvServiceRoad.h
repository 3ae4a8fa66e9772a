#pragma once
// What a service built on this library does with the requests of zuvCli: an event goes to the
// RMC the way every event of the service goes (platform services, message header, sendEvent,
// and the completion's result as the answer), and an inventory request writes what the
// library reads from the host's SMBIOS.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "zuvInProcessRmc.h"

class zuvPlatformServices;

namespace zuvsim {

struct RoadOptions {
    std::string rmc;                   // "sim": the in-process simulated RMC; "device": /dev/ipmi0
    std::string rmcBehave = "normal";  // of the simulated RMC: "normal" or "lost"
    bool realPause = true;             // of the simulated RMC
    std::string reportFile;            // what the RMC received and its doorbells, after each request
};

class ServiceRoad {
public:
    // Throws std::invalid_argument for a bad option.
    explicit ServiceRoad(const RoadOptions& options);
    ~ServiceRoad();

    // "708" or "708 ABCDEFGHIJKLMNOP": the event with this id and location. 0 when all its
    // blocks reached the RMC, -1 when not.
    int32_t sendTestEvent(const std::string& payload);
    // An event JSON as zuvCli checked it, sent as it stands; 0 or -1 as above.
    int32_t sendEventText(const std::string& json);
    // 0 when the inventory was written to the file, -1 when there is none (no platform
    // services), -2 when the file can't be opened for writing.
    int32_t saveInventory(const std::string& fileName);

private:
    // Built at first use and kept; null when the build failed (tried again next time).
    zuvPlatformServices* services();
    // Runs send with a completion and waits for the code it is called with.
    int32_t deliver(const std::function<void(std::function<void(int)>)>& send);
    void report();

    std::unique_ptr<InProcessRmc> rmc;
    std::unique_ptr<zuvPlatformServices> platform;
    std::string reportFile;
};

}  // namespace zuvsim
