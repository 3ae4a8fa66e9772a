#pragma once
// The in-band transport towards the RMC.

#include <functional>
#include <string>

// Doorbell kinds and their IPMI commands (network function 0x3A).
enum zuvDoorBellKind { DoorBellInventory = 1, DoorBellTelemetry = 2, DoorBellIOFWU = 3 };

class zuvInbandComInterface {
public:
    // Sends a named command with its text to the RMC; raises std::exception when the transfer fails.
    virtual void execCommand(const std::string& command, const std::string& arguments) = 0;
    // As execCommand, but reports through completion: 0 when transferred, -1 when not. Raises nothing.
    virtual void deliverData(const std::string& command, const std::string& arguments,
                             std::function<void(int)> completion) = 0;
    // One poll of the RMC's doorbell of a kind; raises nothing.
    virtual int checkDoorBell(int kind) = 0;
    virtual ~zuvInbandComInterface() = default;
};

// The transport's IPMI branch.
class zuvInbandIPMIBase : public zuvInbandComInterface {};
