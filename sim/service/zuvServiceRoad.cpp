#include "zuvServiceRoad.h"

#include "delivery/zuvInBandComManager.h"
#include "ipmi/zuvIPMIService.h"
#include "log/zuvLogger.h"
#include "platform/zuvPlatformServices.h"
#include "utils/zuvStringUtils.h"
#include "utils/zuvUtils.h"
#include "zuvSmbiosInventory.h"

#include <cstdio>
#include <cstdlib>
#include <future>
#include <stdexcept>

namespace zuvsim {

ServiceRoad::ServiceRoad(const RoadOptions& options) : reportFile(options.reportFile) {
    zuvLogger::getInstance();  // before the queue starts its worker
    if (options.rmc == "sim")
        rmc = std::make_unique<InProcessRmc>(options.rmcBehave, options.realPause);
    else if (options.rmc != "device")
        throw std::invalid_argument("unknown RMC transport " + options.rmc);
}

ServiceRoad::~ServiceRoad() = default;

zuvPlatformServices* ServiceRoad::services() {
    if (platform) return platform.get();
    try {
        platform = getPlatformServices(1);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "zuvSimService: no platform services: %s\n", e.what());
        return nullptr;
    }
    zuvUtils utils;
    zuvMsgHeader header;
    header.hostName = utils.getHostName();
    header.osVersion = utils.getOSVersion();
    utils.getOSType(header.osType);
    header.ipAddress = utils.getPrimaryIPv4Address();
    platform->getInBandComManager()->initializeMsgHeader(header);
    return platform.get();
}

int32_t ServiceRoad::deliver(const std::function<void(std::function<void(int)>)>& send) {
    if (services() == nullptr) return -1;
    std::promise<int> delivered;
    std::future<int> code = delivered.get_future();
    try {
        send([&delivered](int result) { delivered.set_value(result); });
    } catch (const std::exception&) {
        return -1;  // not queued: the completion never runs
    }
    const int32_t result = code.get() == 0 ? 0 : -1;
    report();
    return result;
}

int32_t ServiceRoad::sendTestEvent(const std::string& payload) {
    const size_t blank = payload.find(' ');
    zuvEvent event;
    event.id = static_cast<int32_t>(std::strtol(payload.c_str(), nullptr, 10));
    event.eventTime = zuvUtils().currentUtcTimestamp();
    event.source = "zuvCli";
    if (blank != std::string::npos)
        event.physicalLocation = zuvStringUtils::trim(payload.substr(blank), zuvStringUtils::whitespaceCharacters);
    return deliver([this, &event](std::function<void(int)> completion) {
        platform->getInBandComManager()->sendEvent(event, completion);
    });
}

int32_t ServiceRoad::sendEventText(const std::string& json) {
    return deliver([this, &json](std::function<void(int)> completion) {
        std::string text = json;
        platform->getInBandComManager()->sendEvent(text, completion);
    });
}

int32_t ServiceRoad::saveInventory(const std::string& fileName) {
    if (services() == nullptr) return -1;
    Json::Value inventory;
    try {
        inventory = smbiosInventory(*platform->getSmbios());
    } catch (const std::exception& e) {
        std::fprintf(stderr, "zuvSimService: no inventory: %s\n", e.what());
        return -1;
    }
    std::FILE* out = std::fopen(fileName.c_str(), "w");
    if (out == nullptr) return -2;
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "    ";
    std::fprintf(out, "%s\n", Json::writeString(writer, inventory).c_str());
    std::fclose(out);
    return 0;
}

void ServiceRoad::report() {
    if (reportFile.empty()) return;
    std::FILE* out = std::fopen(reportFile.c_str(), "a");
    if (out == nullptr) return;
    if (rmc) rmc->reportCommands(out);
    zuvInbandComInterface* transport = zuvIPMIService::getInstance();
    const int inventory = transport->checkDoorBell(DoorBellInventory);
    const int telemetry = transport->checkDoorBell(DoorBellTelemetry);
    const int iofwu = transport->checkDoorBell(DoorBellIOFWU);
    std::fprintf(out, "RMC doorbells: inventory %d, telemetry %d, IOFWU %d\n", inventory, telemetry, iofwu);
    std::fclose(out);
}

}  // namespace zuvsim
