#pragma once
// The event JSON sent to the RMC with "MPEventGen": one object on one line, members in
// sorted order, for example
// {"EventTime":"...","HostName":"esx01","ID":708,"IPv4Addresses":[{"Address":"192.0.2.10"}],
//  "OSType":104,"OSVersion":"7.0.3","PhysicalLocation":"Slot 3 Port 1","Source":"NVMe",
//  "VariableData":{"Code":1}}

#include <json/json.h>

#include <string>

#include "delivery/zuvEvent.h"

// Fills root from the event and the host header. "IPv4Addresses" only with an address,
// "PhysicalLocation" only with a real location, "VariableData" only when it is not null.
void zuvPopulateEventPayload(const zuvEvent& event, const zuvMsgHeader& header, Json::Value& root);

// root as one line without blanks and without a trailing line feed.
std::string zuvEventToString(const Json::Value& root);

// True for an empty location and for the texts that stand for none.
bool zuvIsNoLocation(const std::string& physicalLocation);
