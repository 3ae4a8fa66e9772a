#pragma once
// The front door of delivery to the RMC: events, inventory and telemetry become tasks on a
// one-worker priority queue, so callers never wait for the IPMI channel; the result of a
// transfer reaches the caller later, on the worker, through its completion callback. The
// doorbell questions go straight to the transport.

#include <json/json.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "delivery/zuvDoorBellInterface.h"
#include "delivery/zuvEvent.h"
#include "delivery/zuvPriorityDispatcherQueue.h"

class zuvInbandComInterface;
class zuvSmbiosInterface;

// No virtual destructor: the manager is never deleted through its base, whose destructor is
// protected.
class zuvInBandComManager : public zuvDoorBellInterface {  // NOLINT(cppcoreguidelines-virtual-class-destructor)
public:
    // Priorities of the four kinds of task: the larger runs first.
    static constexpr int kEventPriority = 3;
    static constexpr int kInventoryPriority = 2;
    static constexpr int kUtilizationPriority = 1;
    static constexpr int kAppTelemetryPriority = 0;

    // The process's manager, built at the first call that succeeds; a call after a failed
    // construction tries the whole construction again. smbios is not owned.
    static zuvInBandComManager* getInstance(zuvSmbiosInterface* smbios);

    // The service uses getInstance; a manager of its own lifetime shares the transport.
    // Throws what the platform look-up or the opening of the IPMI device throws.
    explicit zuvInBandComManager(zuvSmbiosInterface* smbios);
    // Lets the transfer in progress finish; drops the queued tasks without their callbacks.
    ~zuvInBandComManager();
    zuvInBandComManager(const zuvInBandComManager&) = delete;
    zuvInBandComManager& operator=(const zuvInBandComManager&) = delete;

    // Connects to the RMC by protocol; only 0 (IPMI) exists, any other value throws
    // std::runtime_error "NOT Initialized - Protocol Not supported".
    void initialize(int protocol);

    bool isIOFWURequested() override;
    bool isTelemetryRequested() override;
    // Queued; a failed transfer is logged by the transport and reported to no one.
    void sendInventory(const std::string& payload) override;
    // Builds the event JSON on the calling thread and queues it; std::runtime_error
    // "Event NOT Delivered to RMC" when that fails, and completion is then never called.
    void sendEvent(const zuvEvent& event, std::function<void(int)> completion) override;
    // Queues a finished event text.
    void sendEvent(std::string& payload, std::function<void(int)> completion);
    void sendAppTelemetry(const std::string& payload, std::function<void(int)> completion) override;
    void sendUtilization(const std::string& payload, std::function<void(int)> completion) override;
    // Not locked: must not run while another thread is in sendEvent.
    void initializeMsgHeader(zuvMsgHeader header) override;
    // Drops every queued task; their callbacks are never called.
    void cleanup() override;

    // The payload is built on a copy of the event.
    void populateEventPayload(const zuvEvent& event, Json::Value& root);
    std::string eventToString(Json::Value& root);

private:
    void submit(const char* line, const std::function<void()>& task, int priority);
    // The body of the event and telemetry tasks, on the worker.
    void deliver(const char* command, const std::string& payload, const std::function<void(int)>& completion);

    zuvInbandComInterface* transport = nullptr;
    zuvSmbiosInterface* smbios = nullptr;
    std::string hostName;
    std::string osVersion;
    int osType = 0;
    std::string ipAddress;
    std::unique_ptr<zuvPriorityDispatcherQueue> dispatchQueue;
    std::mutex mutex;
};
