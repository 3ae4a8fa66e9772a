#include "zuvCliHandler.h"

#include "channel/zuvPipeChannel.h"
#include "config/zuvConfig.h"
#include "log/zuvLogger.h"
#include "utils/zuvStringUtils.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <new>
#include <stdexcept>

namespace {

const char* const kServicePipe = "/var/run/kelzuv";
const char* const kReplyPipeBase = "/var/run/kelzuvcli";
const uint8_t kClientSenderTag = 9;

// The decimal optopt of the scanner, or the words that stand for an unknown option.
std::string optionText(const char* whenUnknown) {
    return optopt == 0 ? std::string(whenUnknown) : std::to_string(optopt);
}

}  // namespace

bool zuvCliHandler::isTestMode() { return zuvConfig::getInstance().getCliMode() == "test"; }

zuvCliHandler& zuvCliHandler::getInstance() {
    static zuvCliHandler instance;
    return instance;
}

zuvCliHandler::zuvCliHandler()
    : optionString(":hvt:p:j:f:l:"),
      longOptions{{"json-file", required_argument, nullptr, 'f'},
                  {"json-packet", required_argument, nullptr, 'p'},
                  {"test-event", required_argument, nullptr, 't'},
                  {"physical-location", required_argument, nullptr, 'l'},
                  {"json-inventory", required_argument, nullptr, 'j'},
                  {"help", no_argument, nullptr, 'h'},
                  {nullptr, 0, nullptr, 0}},
      messageTypes{{0, 0x0101}, {1, 0x0100}, {2, 0x0102}, {3, 0x0103}},
      physicalLocationLength(16),
      resourceManagerIds{{2, 1}, {3, 3}, {4, 0}, {5, 2}, {6, 4}, {7, 6}, {8, 7}, {-1, -1}} {}

void zuvCliHandler::parseArguments(int argc, char** argv) {
    std::string pendingTestEvent;
    for (;;) {
        const int choice = getopt_long(argc, argv, optionString.c_str(), longOptions.data(), nullptr);
        if (choice == -1) break;
        const std::string argument =
            optarg != nullptr ? zuvStringUtils::trim(optarg, zuvStringUtils::whitespaceCharacters) : "";
        switch (choice) {
            case ':': throw std::runtime_error("Option " + optionText("provided") + " requires an argument");
            case 'f': handleJsonFile(argument); break;
            case 'p': handleJsonPacket(argument); break;
            case 'j': handleJsonInventory(argument); break;
            case 't':
                checkTestEvent(argument);
                pendingTestEvent = argument;
                break;
            case 'l': appendPhysicalLocation(argument, pendingTestEvent); break;
            case 'h': printUsage(); break;
            default: throw std::runtime_error("Option " + optionText("provided is") + " invalid: ignored");
        }
    }
    if (!pendingTestEvent.empty()) exchange(2, pendingTestEvent);
}

void zuvCliHandler::printUsage() {
    const bool testMode = isTestMode();
    std::cout << "Usage:" << std::endl;
    if (testMode) {
        std::cout << "zuvCli [-t|--test-event eventid] [-h|--help] [-j|--json-inventory filename]" << std::endl;
    } else {
        std::cout << "zuvCli [-t|--test-event eventid] [-l|--physical-location physicallocation] "
                     "[-p|--json-packet jsonpacket] [-f|--json-file jsonfilename] [-j|--json-inventory filename] "
                     "[-h]"
                  << std::endl;
    }
}

void zuvCliHandler::appendPhysicalLocation(const std::string& location, std::string& pendingTestEvent) {
    if (pendingTestEvent.empty()) throw std::runtime_error("Option '-l' should follow option '-t'.");
    if (location.size() != physicalLocationLength)
        throw std::runtime_error("Invalid physical location. Physical location must be of 16 characters.");
    pendingTestEvent += ' ';
    pendingTestEvent += location;
}

void zuvCliHandler::handleJsonInventory(const std::string& fileName) {
    if (fileName.empty()) throw std::runtime_error("Inventory JSON file name cannot be empty");
    exchange(3, fileName);
}

void zuvCliHandler::exchange(int kind, const std::string& payload) {
    // The channel logs, and the first log line builds the logger, which can throw (no configuration)
    // or end the process (log directories that can't be made). Build it before the reply pipe
    // exists, so that neither way out leaves the pipe behind.
    zuvLogger::getInstance();
    const std::string replyPipe = createReplyPipe();
    try {
        sendRequest(kind, payload, replyPipe);
        receiveReply(kind, replyPipe);
    } catch (...) {
        unlink(replyPipe.c_str());
        throw;
    }
    unlink(replyPipe.c_str());
}

std::string zuvCliHandler::createReplyPipe() {
    std::string path = kReplyPipeBase + std::to_string(getpid());
    if (!zuvCreatePipe(path.c_str())) throw std::runtime_error(std::string(kReplyPipeBase) + " creation failed");
    return path;
}

// The reply pipe is exchange's to remove, on every way out.
void zuvCliHandler::sendRequest(int kind, const std::string& payload, const std::string& /*replyPipe*/) {
    zuvPipePacket* request = new (std::nothrow) zuvPipePacket{};
    if (request == nullptr)
        throw std::runtime_error("Failed to initialize messageToServer pointer. Error: [Memory allocation error].");
    request->senderTag = kClientSenderTag;
    request->messageType = messageTypes[kind];
    request->payloadLength = static_cast<uint32_t>(payload.size());
    request->senderPid = static_cast<uint32_t>(getpid());
    request->payload = static_cast<char*>(malloc(payload.empty() ? 1 : payload.size()));
    if (request->payload == nullptr) {
        delete request;
        throw std::runtime_error("Failed to initialize messageToServer payload. Error: [Memory allocation error].");
    }
    std::memcpy(request->payload, payload.data(), payload.size());
    const bool sent = zuvWritePipe(kServicePipe, request);
    free(request->payload);
    delete request;
    if (!sent)
        throw std::runtime_error(
            "Failed to communicate with ZUV service. Please verify that ZUV is running and that zuvCli is run "
            "with administrator privileges.");
}

void zuvCliHandler::receiveReply(int kind, const std::string& replyPipe) {
    zuvPipePacket* reply = new (std::nothrow) zuvPipePacket{};
    if (reply == nullptr)
        throw std::runtime_error("Failed to initialize responseFromServer pointer. Error: [Memory allocation error].");
    reply->payload = nullptr;
    const bool received = zuvReadPipe(replyPipe.c_str(), reply);
    // The result code is the first four payload bytes; without them there is no code to print.
    const bool hasCode = received && reply->payload != nullptr && reply->payloadLength >= sizeof(int32_t);
    int32_t code = 0;
    if (hasCode) std::memcpy(&code, reply->payload, sizeof code);
    free(reply->payload);
    delete reply;
    if (!received) throw std::runtime_error("Failed to read the reply of ZUV service.");
    if (!hasCode) throw std::runtime_error("Invalid reply from ZUV service: fewer than four payload bytes.");
    printResult(kind, code);
}

void zuvCliHandler::printResult(int kind, int code) {
    switch (kind) {
        case 0:
        case 1:
        case 2:
            std::cout << (code == 0 ? "ZUVCli: Test Event sent to RMC. Please check logs for details.\n"
                                    : "ZUVCli: Test Event couldn't be sent to RMC. Please check logs for details.\n");
            break;
        case 3:
            if (code == 0) {
                std::cout << "ZUVCli: ZUV inventory saved to given file.\n";
            } else if (code == -1) {
                std::cout << "ZUVCli: Unable to save ZUV inventory to given file. Inventory not ready.\n";
            } else if (code == -2) {
                std::cout << "ZUVCli: Unable to save ZUV inventory to given file. Unable to open file for writing.\n";
            } else {
                std::cout << "ZUVCli: Unable to save ZUV inventory to given file.\n";
            }
            break;
        default: std::cout << "ZUVCli: Unrecognized option. {" << kind << "}\n"; break;
    }
    std::cout.flush();
}
