// A stand-in for the ZUV service at the other end of zuvCli's conversation: it holds
// /var/run/kelzuv open, reads request packets, records them, and answers on the client's reply
// pipe. With --rmc it is a user of the library as the real service is: events go through the
// delivery road to an RMC, and inventory requests write what the library reads from SMBIOS.
//
//   zuvSimService [--record FILE] [--answer TYPE=CODE]... [--behave TYPE=MODE]... [--count N]
//                 [--inventory-json TEXT]
//                 [--rmc sim|device] [--rmc-behave normal|lost] [--rmc-pause real|none]
//                 [--rmc-report FILE]
//
// TYPE is a message type (decimal or 0x...) or "all". CODE is the 32-bit result code (default 0).
// MODE says how to answer: normal, silent (read, never answer), short (two payload bytes),
// extra (the code and eight more bytes), empty (open the reply pipe and close it unwritten).
// With --inventory-json, an inventory request (0x0103) that is to be answered 0 first writes TEXT
// to the file it names (relative names from the service's working directory), and is answered
// -2 when that file can't be opened for writing.
// Every packet received is appended to FILE as "packet <hex of the 17 meta bytes and the payload>".
//
// With --rmc, event requests (0x0100, 0x0101, 0x0102) are answered with the outcome of their
// delivery (0, or -1 when the transfer failed) and inventory requests (0x0103) with 0, -1 (no
// SMBIOS data) or -2; --answer then sets the codes of other types only. "sim" is the simulated
// RMC behind the IPMI device seam in this process, "device" the host's /dev/ipmi0. The simulated
// RMC answers, or its answers are lost ("lost") so that transfers fail; it takes the 500 ms pause
// behind each command unless told "none", and after each request --rmc-report FILE gets the
// commands it put together and its doorbells.
//
// A packet that is no zuvCli request (tag 9, types 0x0100 to 0x0103) means the stream is out of
// step: what the pipe holds is dropped. A client that is gone before its answer gets none.
#include "channel/zuvPipeChannel.h"
#include "zuvServicePipe.h"
#include "zuvServiceRoad.h"

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

const char* const kServicePipe = "/var/run/kelzuv";
const int kAllTypes = -1;
const uint8_t kClientTag = 9;
const uint16_t kEventPacketType = 0x0100;
const uint16_t kEventFileType = 0x0101;
const uint16_t kTestEventType = 0x0102;
const uint16_t kInventoryType = 0x0103;

struct Options {
    std::string recordFile;
    std::string inventoryJson;
    bool writeInventory = false;
    std::map<int, int32_t> codes;
    std::map<int, std::string> modes;
    long count = -1;
    zuvsim::RoadOptions road;  // the road is taken when road.rmc is set
};

int parseType(const std::string& text) {
    return text == "all" ? kAllTypes : static_cast<int>(std::strtol(text.c_str(), nullptr, 0));
}

template <typename Value>
Value lookup(const std::map<int, Value>& byType, int type, Value fallback) {
    auto found = byType.find(type);
    if (found != byType.end()) return found->second;
    found = byType.find(kAllTypes);
    return found != byType.end() ? found->second : fallback;
}

bool splitPair(const char* text, std::string& left, std::string& right) {
    const char* equals = std::strchr(text, '=');
    if (!equals) return false;
    left.assign(text, equals);
    right.assign(equals + 1);
    return true;
}

Options parseOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        if (i + 1 >= argc) {
            std::fprintf(stderr, "zuvSimService: %s needs a value\n", name.c_str());
            std::exit(2);
        }
        const char* value = argv[++i];
        std::string left, right;
        if (name == "--record") {
            options.recordFile = value;
        } else if (name == "--inventory-json") {
            options.inventoryJson = value;
            options.writeInventory = true;
        } else if (name == "--count") {
            options.count = std::strtol(value, nullptr, 10);
        } else if (name == "--rmc") {
            options.road.rmc = value;
        } else if (name == "--rmc-behave") {
            options.road.rmcBehave = value;
        } else if (name == "--rmc-pause" && (std::strcmp(value, "real") == 0 || std::strcmp(value, "none") == 0)) {
            options.road.realPause = std::strcmp(value, "real") == 0;
        } else if (name == "--rmc-report") {
            options.road.reportFile = value;
        } else if (name == "--answer" && splitPair(value, left, right)) {
            options.codes[parseType(left)] = static_cast<int32_t>(std::strtol(right.c_str(), nullptr, 0));
        } else if (name == "--behave" && splitPair(value, left, right)) {
            options.modes[parseType(left)] = right;
        } else {
            std::fprintf(stderr, "zuvSimService: bad option %s %s\n", name.c_str(), value);
            std::exit(2);
        }
    }
    return options;
}

void record(const std::string& file, const zuvPipePacket& packet) {
    if (file.empty()) return;
    FILE* out = std::fopen(file.c_str(), "a");
    if (!out) return;
    std::fprintf(out, "packet");
    const auto* meta = reinterpret_cast<const uint8_t*>(&packet);
    for (size_t i = 0; i < zuvPipeMetaDataSize; ++i) std::fprintf(out, " %02x", meta[i]);
    for (uint32_t i = 0; i < packet.payloadLength; ++i)
        std::fprintf(out, " %02x", static_cast<uint8_t>(packet.payload[i]));
    std::fprintf(out, "\n");
    std::fclose(out);
}

// 0 when the inventory was written, -2 when the file can't be opened for writing.
int32_t saveInventory(const char* fileName, const std::string& json) {
    FILE* out = std::fopen(fileName, "w");
    if (!out) return -2;
    std::fputs(json.c_str(), out);
    std::fclose(out);
    return 0;
}

// What zuvCli sends: its tag, one of its four message types.
bool isRequest(const zuvPipePacket& packet) {
    return packet.senderTag == kClientTag && packet.messageType >= kEventPacketType &&
           packet.messageType <= kInventoryType;
}

int32_t resultOf(const Options& options, zuvsim::ServiceRoad* road, const zuvPipePacket& request) {
    if (road != nullptr) {
        switch (request.messageType) {
            case kEventPacketType:
            case kEventFileType: return road->sendEventText(request.payload);
            case kTestEventType: return road->sendTestEvent(request.payload);
            case kInventoryType: return road->saveInventory(request.payload);
        }
    }
    int32_t code = lookup(options.codes, request.messageType, int32_t{0});
    if (request.messageType == kInventoryType && code == 0 && options.writeInventory)
        code = saveInventory(request.payload, options.inventoryJson);
    return code;
}

void answer(const Options& options, zuvsim::ServiceRoad* road, const zuvPipePacket& request) {
    const std::string mode = lookup(options.modes, request.messageType, std::string("normal"));
    if (mode == "silent") return;
    const std::string replyPipe = "/var/run/kelzuvcli" + std::to_string(request.senderPid);
    const int32_t code = resultOf(options, road, request);
    if (kill(static_cast<pid_t>(request.senderPid), 0) != 0 && errno == ESRCH) {
        // Gone before its answer: the open of its reply pipe would wait for ever.
        std::fprintf(stderr, "zuvSimService: client %u is gone, no answer\n", request.senderPid);
        return;
    }
    std::vector<char> payload(sizeof code);
    std::memcpy(payload.data(), &code, sizeof code);
    if (mode == "short") payload.resize(2);
    if (mode == "extra") payload.insert(payload.end(), 8, '\x5a');
    if (mode == "empty") {
        std::FILE* pipe = std::fopen(replyPipe.c_str(), "w");  // the client sees an end of file
        if (pipe) std::fclose(pipe);
        return;
    }
    zuvPipePacket reply{};
    reply.senderTag = 1;
    reply.messageType = request.messageType;
    reply.payloadLength = static_cast<uint32_t>(payload.size());
    reply.senderPid = static_cast<uint32_t>(getpid());
    reply.payload = payload.data();
    if (!zuvWritePipe(replyPipe.c_str(), &reply))
        std::fprintf(stderr, "zuvSimService: no reply pipe %s\n", replyPipe.c_str());
}

int serve(const Options& options, zuvsim::ServiceRoad* road) {
    const int heldPipe = zuvsim::holdServicePipe(kServicePipe);
    if (heldPipe < 0) return 1;
    for (long served = 0; options.count < 0 || served < options.count; ++served) {
        zuvPipePacket request{};
        request.payload = nullptr;
        if (zuvReadPipe(kServicePipe, &request) && isRequest(request)) {
            record(options.recordFile, request);
            answer(options, road, request);
        } else {
            // Out of step: a run before this one died between the two reads of a packet, and
            // its payload was taken for meta data. Start again with what comes next.
            std::fprintf(stderr, "zuvSimService: out of step, dropped %ld bytes\n", zuvsim::dropUnread(heldPipe));
            --served;
        }
        std::free(request.payload);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const Options options = parseOptions(argc, argv);
    // A client that dies before reading its answer must not take the service with it.
    signal(SIGPIPE, SIG_IGN);
    // Declared first so that it is destroyed after the library's singletons, which use the
    // simulated RMC's device up to their end.
    static std::unique_ptr<zuvsim::ServiceRoad> road;
    if (!options.road.rmc.empty()) {
        try {
            road = std::make_unique<zuvsim::ServiceRoad>(options.road);
        } catch (const std::exception& e) {
            std::fprintf(stderr, "zuvSimService: %s\n", e.what());
            return 2;
        }
    }
    mkdir("/var/run", 0755);
    try {
        return serve(options, road.get());
    } catch (const std::exception& e) {  // e.g. no configuration file for the library's logger
        std::fprintf(stderr, "zuvSimService: %s\n", e.what());
        return 2;
    }
}
