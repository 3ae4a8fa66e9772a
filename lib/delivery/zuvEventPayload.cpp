#include "delivery/zuvEventPayload.h"

#include "log/zuvLogger.h"

#define MANAGER_TAG "ZUV_COM_MANAGER"

bool zuvIsNoLocation(const std::string& physicalLocation) {
    static const char* const kNoLocation[] = {"Not Applicable", "Not Available", "NotApplicable", "NotAvailable"};
    if (physicalLocation.empty()) return true;
    for (const char* text : kNoLocation) {
        if (physicalLocation == text) return true;
    }
    return false;
}

void zuvPopulateEventPayload(const zuvEvent& original, const zuvMsgHeader& header, Json::Value& root) {
    const zuvEvent event = original;
    ZUV_LOG_DEBUG(MANAGER_TAG, "Populate Event Payload - Start");

    root["HostName"] = header.hostName;
    root["OSVersion"] = header.osVersion;
    root["OSType"] = header.osType;
    ZUV_LOG_DEBUG(MANAGER_TAG, "zuvInBandComManager: initialize Msg header [IP Address = %s]",
                  header.ipAddress.c_str());
    if (!header.ipAddress.empty()) root["IPv4Addresses"][0]["Address"] = header.ipAddress;

    root["ID"] = Json::Int(event.id);
    root["Source"] = event.source;
    root["EventTime"] = event.eventTime;

    ZUV_LOG_DEBUG(MANAGER_TAG, "zuvInBandComManager: initialize Msg [phyloc = %s]", event.physicalLocation.c_str());
    if (!zuvIsNoLocation(event.physicalLocation)) root["PhysicalLocation"] = event.physicalLocation;

    if (event.variableData != Json::Value()) {
        ZUV_LOG_DEBUG(MANAGER_TAG, "zuvInBandComManager: Set variable data");
        root["VariableData"] = event.variableData;
    }
    ZUV_LOG_DEBUG(MANAGER_TAG, "Populate Event Payload - Finished");
}

std::string zuvEventToString(const Json::Value& root) {
    ZUV_LOG_DEBUG(MANAGER_TAG, "Transform Event obj to String");
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    std::string text = Json::writeString(builder, root);
    if (!text.empty() && text.back() == '\n') text.pop_back();
    return text;
}
