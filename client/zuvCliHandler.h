#pragma once
// The one object of zuvCli: option scan, checks of what is to be sent, and the conversation
// with the ZUV service over its named pipe and a reply pipe of our own.

#include <getopt.h>
#include <json/json.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// Event id to event resource type; -1 for an id that leads to no resource manager.
int32_t eventResourceType(uint32_t eventId);

class zuvCliHandler {
public:
    static zuvCliHandler& getInstance();

    // Scans the options and carries out the requests; failures are std::runtime_error.
    void parseArguments(int argc, char** argv);
    void printUsage();

    void appendPhysicalLocation(const std::string& location, std::string& pendingTestEvent);
    void handleJsonInventory(const std::string& fileName);
    void checkTestEvent(const std::string& eventId);
    void handleJsonPacket(const std::string& text);
    void handleJsonFile(const std::string& fileName);
    void checkEventJson(const std::string& text);
    bool hasRequiredEventFields(const Json::Value& root);
    int32_t resourceManagerIdFor(int32_t type);

    // One conversation: reply pipe, request, reply, printed line. The reply pipe is removed on
    // every way out; sendRequest and receiveReply only throw.
    void exchange(int kind, const std::string& payload);
    std::string createReplyPipe();
    void sendRequest(int kind, const std::string& payload, const std::string& replyPipe);
    void receiveReply(int kind, const std::string& replyPipe);
    void printResult(int kind, int code);

private:
    zuvCliHandler();
    // The restricted mode: "test", also when CliMode is missing or no string.
    static bool isTestMode();

    std::string optionString;
    std::vector<option> longOptions;
    std::map<int32_t, uint16_t> messageTypes;
    uint64_t physicalLocationLength;
    std::map<int32_t, int32_t> resourceManagerIds;
};
