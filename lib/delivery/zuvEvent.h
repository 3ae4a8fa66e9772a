#pragma once
// The records that the service fills for the in-band communication manager.

#include <json/json.h>

#include <cstdint>
#include <string>

// One event as the service hands it to sendEvent.
struct zuvEvent {
    int32_t id = 0;          // event id
    std::string eventTime;   // sent as it is
    uint8_t flag = 0;        // carried, not read here
    std::string firstText;   // carried, not read here
    std::string secondText;  // carried, not read here
    std::string physicalLocation;
    std::string source;
    Json::Value variableData;  // sent unless null
};

// The host's identity, sent with every event.
struct zuvMsgHeader {
    std::string hostName;
    std::string osVersion;
    int osType = 0;
    std::string ipAddress;
};
