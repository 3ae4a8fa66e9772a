#pragma once
// What the service asks of the delivery subsystem: the RMC's doorbell and the sends.
// Implemented by zuvInBandComManager. Not deleted through this base.

#include <functional>
#include <string>

#include "delivery/zuvEvent.h"

class zuvDoorBellInterface {
public:
    virtual bool isIOFWURequested() = 0;
    virtual bool isTelemetryRequested() = 0;
    virtual void sendInventory(const std::string& payload) = 0;
    virtual void sendEvent(const zuvEvent& event, std::function<void(int)> completion) = 0;
    virtual void sendAppTelemetry(const std::string& payload, std::function<void(int)> completion) = 0;
    virtual void sendUtilization(const std::string& payload, std::function<void(int)> completion) = 0;
    virtual void initializeMsgHeader(zuvMsgHeader header) = 0;
    virtual void cleanup() = 0;

protected:
    ~zuvDoorBellInterface() = default;
};
