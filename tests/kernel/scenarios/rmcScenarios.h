#pragma once
// The RMC traffic that the kernel tests drive through the real driver, phase by phase. The
// same phases run on the host through the device seam, and the simulated RMC is set up the
// same way for both, so that what it receives can be compared byte for byte.

#include "zuvSimRmc.h"

#include <cstdint>
#include <string>
#include <vector>

class zuvIPMIService;

namespace zuvkernel {

// Network function and command of the phase marker: the guest announces each phase with the
// phase's name as request data, and the host answers it itself (it never reaches the RMC).
constexpr uint8_t kMarkerNetFn = 0x3A;
constexpr uint8_t kMarkerCmd = 0x90;

// Phases whose traffic is compared with the seam run, in the order the guest runs them.
const std::vector<std::string>& comparedPhases();
// Phases of the faults, after the compared ones.
const std::vector<std::string>& faultPhases();

// Sets up the RMC for a phase (its SDR repository, doorbells, scripted statuses).
void configureRmc(const std::string& phase, zuvsim::SimulatedRmc& rmc);

// The argument texts of the block commands of the "blocks" phase.
std::string eventText();         // an MPEventGen JSON over 4 blocks
std::string inventoryText();     // 4 blocks
std::string telemetryText();     // 1 block
std::string appTelemetryText();  // exactly 2 full blocks

// What a phase's calls gave back.
struct PhaseOutcome {
    std::vector<int> results;                   // callback values and doorbell answers, in call order
    std::vector<std::string> exceptions;        // what() of every exception caught, in order
    std::vector<std::vector<uint8_t>> records;  // the SDR cache's records, each cut to 5 + length
    int infoCalls = 0, reserveCalls = 0, getSdrCalls = 0;
};

// Runs the calls of a compared phase on the service.
PhaseOutcome runPhase(const std::string& phase, zuvIPMIService& service);

}  // namespace zuvkernel
