// Checks of what the client sends: test event ids, event JSON packets and files.
#include "zuvCliHandler.h"

#include "config/zuvConfig.h"

#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>

namespace {

const size_t kMaxEventJsonBytes = 4096;

}  // namespace

int32_t eventResourceType(uint32_t eventId) {
    static const std::map<uint32_t, int32_t> types = [] {
        std::map<uint32_t, int32_t> byId;
        const std::pair<int32_t, std::set<uint32_t>> groups[] = {
            {1, {708}},
            {2, {356, 359, 360, 434, 435, 1337, 1338, 1750, 1751, 1752}},
            {3, {678, 680, 1384, 1390}},
            {4, {383, 384, 385, 386, 388, 390, 1391}},
            {5, {397, 398, 538, 539, 540, 681, 683, 1179, 1180, 1181, 1182, 1183, 1385, 1387, 1388}},
            {6, {835, 836, 837}},
            {-1, {1148, 1150, 1151, 1501, 1978}},
        };
        for (const auto& group : groups)
            for (uint32_t id : group.second) byId[id] = group.first;
        return byId;
    }();
    const auto found = types.find(eventId);
    return found == types.end() ? -1 : found->second;
}

int32_t zuvCliHandler::resourceManagerIdFor(int32_t type) { return resourceManagerIds[type]; }

void zuvCliHandler::checkTestEvent(const std::string& eventId) {
    int id = 0;
    try {
        id = std::stoi(eventId);
    } catch (const std::logic_error&) {  // no digits, or out of the 32-bit range
        throw std::runtime_error("Please provide valid EVENTID to zuvCli.");
    }
    if (isTestMode() && id != 708) throw std::runtime_error("Please provide valid EVENTID to zuvCli.");
    const int32_t type = eventResourceType(static_cast<uint32_t>(id));
    if (type == -1) throw std::runtime_error("Please enter a valid EVENTID to zuvCli.");
    if (type != 1 && !zuvConfig::getInstance().isResourceManagerEnabled(resourceManagerIdFor(type)))
        throw std::runtime_error("The resource manager for given EVENTID is not enabled.");
}

void zuvCliHandler::handleJsonPacket(const std::string& text) {
    if (isTestMode()) throw std::runtime_error("Invalid option");
    if (text.size() > kMaxEventJsonBytes)
        throw std::runtime_error("Failed to process JSON payload! Error = (Too large)");
    checkEventJson(text);
    exchange(1, text);
}

void zuvCliHandler::handleJsonFile(const std::string& fileName) {
    if (isTestMode()) throw std::runtime_error("Invalid option");
    // One byte more than the limit is enough to refuse a file, however large (or endless) it is.
    std::string contents(kMaxEventJsonBytes + 1, '\0');
    std::ifstream file(fileName, std::ios::binary);
    if (file.is_open()) file.read(&contents[0], static_cast<std::streamsize>(contents.size()));
    // A directory opens but can't be read: to the user it is a file that can't be opened.
    if (!file.is_open() || file.bad()) throw std::runtime_error("Failed to open JSON file!, filename = " + fileName);
    contents.resize(static_cast<size_t>(file.gcount()));
    file.close();
    if (contents.size() > kMaxEventJsonBytes)
        throw std::runtime_error("Failed to process JSON file! Error = (Too large), filename = " + fileName);
    checkEventJson(contents);
    exchange(0, contents);
}

bool zuvCliHandler::hasRequiredEventFields(const Json::Value& root) {
    for (const char* member : {"EventTime", "HostName", "ID", "IPv4Addresses", "OSType", "OSVersion", "Source"})
        if (!root.isMember(member)) return false;
    return true;
}

void zuvCliHandler::checkEventJson(const std::string& text) {
    Json::CharReaderBuilder builder;
    Json::Value root;
    std::string errors;
    std::istringstream stream(text);
    bool parsed = false;
    try {
        parsed = Json::parseFromStream(builder, stream, &root, &errors);
    } catch (const Json::Exception& e) {  // the parser throws for what it won't read, such as deep nesting
        errors = e.what();
    }
    if (!parsed || root.size() == 0)
        throw std::runtime_error("Unable to send TEST EVENT due to invalid format of json string. Error: " + errors);
    uint32_t eventId = 0;
    bool hasLocation = false;
    try {
        // A root that is an array, or an ID that is no unsigned number, makes the JSON library throw.
        if (!hasRequiredEventFields(root))
            throw std::runtime_error("Unable to send TEST EVENT as json string is incomplete");
        eventId = static_cast<uint32_t>(root["ID"].asUInt64());
        hasLocation = root.isMember("PhysicalLocation");
    } catch (const Json::Exception& e) {
        throw std::runtime_error("Unable to send TEST EVENT as json string has members of the wrong type. Error: " +
                                 std::string(e.what()));
    }
    const int32_t type = eventResourceType(eventId);
    if (type == -1 || (type != 1 && !zuvConfig::getInstance().isResourceManagerEnabled(resourceManagerIdFor(type))))
        throw std::runtime_error("Failed to send zuvCli event as the corresponding resource manager is not running");
    if (type == 1 || type == 2) return;
    if (type >= 3 && type <= 7) {
        if (!hasLocation)
            throw std::runtime_error(
                "Failed to send TEST EVENT as json string is incomplete. PhysicalLocation is missing");
        return;
    }
    throw std::runtime_error("Packet/file content is not validated for eventID");
}
