#include "rmcScenarios.h"

#include "countingIpmiService.h"
#include "ipmi/zuvIPMIService.h"
#include "ipmi/zuvSDRRepositoryCache.h"

#include <exception>

namespace zuvkernel {

const std::vector<std::string>& comparedPhases() {
    static const std::vector<std::string> phases{"blocks", "statuses", "doorbells", "sdr"};
    return phases;
}

const std::vector<std::string>& faultPhases() {
    static const std::vector<std::string> phases{"fault-silent", "fault-checksum", "fault-close"};
    return phases;
}

std::string eventText() {
    std::string text = "{\"ID\":708,\"Severity\":\"Critical\",\"Message\":\"";
    for (int i = 0; text.size() < 290; ++i) text += "disk " + std::to_string(i) + " failed; ";
    return text + "\"}";
}
std::string inventoryText() { return std::string(150, 'I'); }    // L 151: 33+57+57+4
std::string telemetryText() { return "cpu=42;mem=17;net=3"; }    // L 20: one block
std::string appTelemetryText() { return std::string(89, 'a'); }  // L 90: 33+57 exactly

// Lengths chosen for the read pattern: no body, one piece, one byte over, the longest record.
static const std::vector<uint8_t> kRecordLengths{0, 16, 17, 250, 35, 1, 48, 100, 5, 64, 33, 200};

void configureRmc(const std::string& phase, zuvsim::SimulatedRmc& rmc) {
    if (phase == "statuses") {
        // Status 5 on the first block, then 1 and 2 in mid-transfer: the transfer goes on.
        rmc.scriptBlockReplies({{5, 9}, {1, 0}, {2, 0}});
    } else if (phase == "doorbells") {
        const std::string inventory = "pending WriteInventory now";
        rmc.setDoorBell(0x81, std::vector<uint8_t>(inventory.begin(), inventory.end()));
        rmc.setDoorBell(0x82, {1, 0, 0, 0, 7});
        rmc.setDoorBell(0x83, {1, 0});
    } else if (phase == "sdr" || phase == "measure") {
        for (size_t i = 0; i < kRecordLengths.size(); ++i) {
            std::vector<uint8_t> body(kRecordLengths[i]);
            for (size_t j = 0; j < body.size(); ++j) body[j] = static_cast<uint8_t>(i * 31 + j * 7 + 1);
            rmc.addSdr(i % 2 ? 0x01 : 0x02, body);
        }
        // The seventh record's reservation is lost once, after its header and first piece.
        if (phase == "sdr") rmc.cancelReservationAt(6, 21);
    }
}

PhaseOutcome runPhase(const std::string& phase, zuvIPMIService& service) {
    PhaseOutcome outcome;
    auto record = [&outcome](int value) { outcome.results.push_back(value); };
    auto attempt = [&outcome](auto&& call) {
        try {
            call();
        } catch (const std::exception& e) {
            outcome.exceptions.push_back(e.what());
        }
    };
    if (phase == "blocks") {
        service.deliverData("MPEventGen", eventText(), record);
        attempt([&] { service.execCommand("WriteInventory", inventoryText()); });
        service.deliverData("WriteTelemetry", telemetryText(), record);
        service.deliverData("WriteAppTelemetry", appTelemetryText(), record);
    } else if (phase == "statuses") {
        attempt([&] { service.execCommand("WriteInventory", std::string(120, 's')); });
    } else if (phase == "doorbells") {
        for (int kind : {1, 2, 3, 4}) record(service.checkDoorBell(kind));
    } else if (phase == "sdr") {
        CountingIpmiService counting(service);
        zuvIPMI::SDRRepositoryCache cache(&counting);
        attempt([&] {
            for (const auto& r : cache) outcome.records.emplace_back(r.bytes, r.bytes + 5 + r.bytes[4]);
        });
        outcome.infoCalls = counting.infoCalls;
        outcome.reserveCalls = counting.reserveCalls;
        outcome.getSdrCalls = counting.getSdrCalls;
    }
    return outcome;
}

}  // namespace zuvkernel
