#include "delivery/zuvInBandComManager.h"

#include <exception>
#include <stdexcept>
#include <utility>

#include "delivery/zuvEventPayload.h"
#include "ipmi/zuvIPMIService.h"
#include "ipmi/zuvInbandComInterface.h"
#include "log/zuvLogger.h"
#include "platform/zuvSmbiosInterface.h"

#define MANAGER_TAG "ZUV_COM_MANAGER"

namespace {

constexpr int kProtocolIPMI = 0;

// The family for the first log line; a failure to read it is left to the platform check
// that follows, which reports it.
std::string familyForLog(zuvSmbiosInterface* smbios) {
    try {
        return smbios->getFamily();
    } catch (...) {
        return "";
    }
}

}  // namespace

zuvInBandComManager* zuvInBandComManager::getInstance(zuvSmbiosInterface* smbios) {
    static zuvInBandComManager instance(smbios);
    return &instance;
}

zuvInBandComManager::zuvInBandComManager(zuvSmbiosInterface* smbiosAccess) : smbios(smbiosAccess) {
    ZUV_LOG_INFO(MANAGER_TAG, "Creating zuvInBandComManager: platformId [%s]", familyForLog(smbios).c_str());
    try {
        smbios->getPlatform();  // only its success counts
        initialize(kProtocolIPMI);
    } catch (const std::runtime_error& e) {
        ZUV_LOG_ERROR(MANAGER_TAG, "FAILURE in Initializing the Communication Channel [%s]", e.what());
        throw;
    } catch (...) {
        ZUV_LOG_ERROR(MANAGER_TAG, "FAILURE in Initializing the Communication Channel & Dispatcher Queue");
        throw;
    }
}

zuvInBandComManager::~zuvInBandComManager() {
    ZUV_LOG_INFO(MANAGER_TAG, "Destructor: zuvInBandComManager");
    dispatchQueue.reset();
}

void zuvInBandComManager::initialize(int protocol) {
    ZUV_LOG_DEBUG(MANAGER_TAG, "Initialize zuvInBandComManager: protocol [%d]", protocol);
    if (protocol != kProtocolIPMI) {
        ZUV_LOG_DEBUG(MANAGER_TAG, "NO Supporting Protocol - existing");
        throw std::runtime_error("NOT Initialized - Protocol Not supported");
    }
    transport = zuvIPMIService::getInstance();
    auto queue = std::make_unique<zuvPriorityDispatcherQueue>("ZUV - IPMI Dispatch Queue", 1);
    std::lock_guard<std::mutex> lock(mutex);
    dispatchQueue = std::move(queue);
}

void zuvInBandComManager::initializeMsgHeader(zuvMsgHeader header) {
    ZUV_LOG_DEBUG(MANAGER_TAG,
                  "zuvInBandComManager: initialize Msg header [HostName = %s], [OSVersion = %s], [OSType = %d]",
                  header.hostName.c_str(), header.osVersion.c_str(), header.osType);
    hostName = std::move(header.hostName);
    osVersion = std::move(header.osVersion);
    osType = header.osType;
    ipAddress = std::move(header.ipAddress);
}

void zuvInBandComManager::populateEventPayload(const zuvEvent& event, Json::Value& root) {
    zuvPopulateEventPayload(event, zuvMsgHeader{hostName, osVersion, osType, ipAddress}, root);
}

std::string zuvInBandComManager::eventToString(Json::Value& root) { return zuvEventToString(root); }

void zuvInBandComManager::sendEvent(const zuvEvent& event, std::function<void(int)> completion) {
    try {
        Json::Value root;
        populateEventPayload(event, root);
        std::string text = eventToString(root);
        ZUV_LOG_INFO(MANAGER_TAG, "Sending event through selected protocol - EventId [%d]\n%s", event.id, text.c_str());
        sendEvent(text, completion);
        ZUV_LOG_INFO(MANAGER_TAG, "Sent - Successful");
    } catch (...) {
        ZUV_LOG_ERROR(MANAGER_TAG, "Failed to send the Event to RMC = [%d]", event.id);
        throw std::runtime_error("Event NOT Delivered to RMC");
    }
}

void zuvInBandComManager::sendEvent(std::string& payload, std::function<void(int)> completion) {
    submit(
        "Submit the Event to Dispatcher",
        [this, payload, completion = std::move(completion)] { deliver("MPEventGen", payload, completion); },
        kEventPriority);
}

void zuvInBandComManager::sendInventory(const std::string& payload) {
    submit(
        "Submit the Inventory to Dispatcher",
        [this, payload] {
            try {
                transport->execCommand("WriteInventory", payload);
            } catch (...) {
                // Logged by the transport; nobody waits for an inventory result.
            }
        },
        kInventoryPriority);
}

void zuvInBandComManager::sendAppTelemetry(const std::string& payload, std::function<void(int)> completion) {
    submit(
        "Submit the Application Telemetry to Dispatcher",
        [this, payload, completion = std::move(completion)] { deliver("WriteAppTelemetry", payload, completion); },
        kAppTelemetryPriority);
}

void zuvInBandComManager::sendUtilization(const std::string& payload, std::function<void(int)> completion) {
    submit(
        "Submit the Utilization Payload to the Dispatcher",
        [this, payload, completion = std::move(completion)] { deliver("WriteTelemetry", payload, completion); },
        kUtilizationPriority);
}

void zuvInBandComManager::submit(const char* line, const std::function<void()>& task, int priority) {
    ZUV_LOG_DEBUG(MANAGER_TAG, "%s", line);
    std::lock_guard<std::mutex> lock(mutex);
    dispatchQueue->dispatch(task, priority);
}

void zuvInBandComManager::deliver(const char* command, const std::string& payload,
                                  const std::function<void(int)>& completion) {
    // deliverData reports a failed transfer through completion; only a completion that
    // raises, against its contract, comes back here, and it must not end the worker.
    try {
        transport->deliverData(command, payload, completion);
    } catch (const std::exception& e) {
        ZUV_LOG_ERROR(MANAGER_TAG, "Completion of %s raised: %s", command, e.what());
    } catch (...) {
        ZUV_LOG_ERROR(MANAGER_TAG, "Completion of %s raised", command);
    }
}

bool zuvInBandComManager::isIOFWURequested() { return transport->checkDoorBell(DoorBellIOFWU) == 1; }

bool zuvInBandComManager::isTelemetryRequested() { return transport->checkDoorBell(DoorBellTelemetry) == 1; }

void zuvInBandComManager::cleanup() {
    std::lock_guard<std::mutex> lock(mutex);
    dispatchQueue->cleanup();
}
