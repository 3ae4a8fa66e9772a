// The in-band manager over the real driver, with the simulated RMC behind QEMU's external
// BMC: its one worker sends the queued work by priority. The host checks the order in which
// the commands reached the RMC; here the callbacks' values and order are checked.
#include "delivery/zuvInBandComManager.h"
#include "externPhase.h"
#include "fixedPlatform.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

TEST(Extern, ManagerSendsQueuedWorkByPriority) {
    zuvkernel::announce("manager");
    zuvkernel::FixedPlatform platform;
    zuvInBandComManager manager(&platform);
    manager.initializeMsgHeader(zuvMsgHeader{"guest-host", "6.1", 2, "10.0.2.15"});

    std::mutex mutex;
    std::condition_variable done;
    std::vector<std::pair<std::string, int>> calls;
    auto callback = [&](const char* name) {
        return [&, name](int result) {
            std::lock_guard<std::mutex> lock(mutex);
            calls.emplace_back(name, result);
            done.notify_all();
        };
    };

    // The lowest priority goes first and keeps the worker busy (its transfer and the pause
    // after it take over half a second), so the other three wait in the queue together.
    manager.sendAppTelemetry("app=1", callback("app"));
    usleep(200000);
    manager.sendUtilization("cpu=42", callback("utilization"));
    manager.sendInventory(std::string(100, 'v'));
    zuvEvent event;
    event.id = 708;
    event.eventTime = "2026-11-23T08:00:00Z";
    event.source = "kernel test";
    event.physicalLocation = "Slot 7";
    manager.sendEvent(event, callback("event"));

    std::unique_lock<std::mutex> lock(mutex);
    ASSERT_TRUE(done.wait_for(lock, std::chrono::seconds(20), [&] { return calls.size() == 3; }));
    const std::vector<std::pair<std::string, int>> expected{{"app", 0}, {"event", 0}, {"utilization", 0}};
    EXPECT_EQ(expected, calls);
}
