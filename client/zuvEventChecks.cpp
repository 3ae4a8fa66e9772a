// Checks of what the client sends: test event ids, event JSON packets and files.
#include "zuvCliHandler.h"

#include "config/zuvConfig.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace {

const size_t kMaxEventJsonBytes = 4096;

}  // namespace

int32_t eventResourceType(uint32_t eventId) {
    // Sorted by id, constant data: a look-up builds nothing at the first request. Ids 1148,
    // 1150, 1151, 1501 and 1978 are named as having no type; every id not here has none.
    static constexpr std::pair<uint32_t, int32_t> types[] = {
        {356, 2},  {359, 2},  {360, 2},  {383, 4},  {384, 4},   {385, 4},  {386, 4},   {388, 4},   {390, 4},
        {397, 5},  {398, 5},  {434, 2},  {435, 2},  {538, 5},   {539, 5},  {540, 5},   {678, 3},   {680, 3},
        {681, 5},  {683, 5},  {708, 1},  {835, 6},  {836, 6},   {837, 6},  {1148, -1}, {1150, -1}, {1151, -1},
        {1179, 5}, {1180, 5}, {1181, 5}, {1182, 5}, {1183, 5},  {1337, 2}, {1338, 2},  {1384, 3},  {1385, 5},
        {1387, 5}, {1388, 5}, {1390, 3}, {1391, 4}, {1501, -1}, {1750, 2}, {1751, 2},  {1752, 2},  {1978, -1},
    };
    const auto found = std::lower_bound(std::begin(types), std::end(types), eventId,
                                        [](const auto& row, uint32_t id) { return row.first < id; });
    return found != std::end(types) && found->first == eventId ? found->second : -1;
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
