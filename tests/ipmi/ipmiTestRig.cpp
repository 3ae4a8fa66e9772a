#include "ipmiTestRig.h"

#include "log/zuvLogger.h"
#include "zuvSandbox.h"

#include <sstream>

namespace ipmitest {
namespace {

const char* const kMainLog = "/opt/kelzuv/logs/zuv.log";
const char* const kDebugLog = "/opt/kelzuv/logs/zuvdebug.log";

std::string contentOf(const char* path) { return zuvtest::fileExists(path) ? zuvtest::readFile(path) : ""; }

// "<time stamp> [LEVEL] <thread> <line> <TAG>: <message>"
bool parseLine(const std::string& text, LogLine& line) {
    const size_t open = text.find(" [");
    if (open == std::string::npos) return false;
    const size_t close = text.find(']', open);
    if (close == std::string::npos) return false;
    line.level = text.substr(open + 2, close - open - 2);
    std::istringstream rest(text.substr(close + 1));
    std::string thread, number;
    rest >> thread >> number >> line.tag;
    if (line.tag.empty() || line.tag.back() != ':') return false;
    line.tag.pop_back();
    std::getline(rest, line.message);
    if (!line.message.empty() && line.message[0] == ' ') line.message.erase(0, 1);
    return true;
}

void collect(const std::string& content, size_t from, std::vector<LogLine>& into) {
    std::istringstream stream(content.substr(std::min(from, content.size())));
    std::string text;
    while (std::getline(stream, text)) {
        LogLine line;
        if (parseLine(text, line)) into.push_back(line);
    }
}

// A device that outlives every test, so that the singleton's close at exit has somewhere to go.
zuvIPMI::DeviceSystem* parkingDevice() {
    static auto* parkedRmc = new zuvsim::SimulatedRmc();
    static auto* parked = new zuvsim::SimulatedRmcDevice(*parkedRmc);
    return parked;
}

}  // namespace

void ensureLogger() {
    static const bool ready = [] {
        zuvtest::writeConfig(std::string("{\"ZUVLogLocation\":\"") + kMainLog + "\",\"DebugLogLocation\":\"" +
                             kDebugLog + "\",\"EnableDebugLog\":true,\"LoggingLevel\":\"Info\"}");
        zuvLogger::getInstance();
        return true;
    }();
    (void)ready;
}

LogCapture::LogCapture() { mark(); }

void LogCapture::mark() {
    mainStart = contentOf(kMainLog).size();
    debugStart = contentOf(kDebugLog).size();
}

std::vector<LogLine> LogCapture::lines() const {
    std::vector<LogLine> all;
    collect(contentOf(kMainLog), mainStart, all);
    collect(contentOf(kDebugLog), debugStart, all);
    return all;
}

std::vector<std::string> LogCapture::messages(const std::string& level) const {
    std::vector<std::string> found;
    for (const LogLine& line : lines())
        if (line.level == level) found.push_back(line.message);
    return found;
}

bool LogCapture::has(const std::string& level, const std::string& message) const {
    for (const LogLine& line : lines())
        if (line.level == level && line.message == message) return true;
    return false;
}

void IpmiTest::SetUp() {
    ensureLogger();
    log.mark();
    zuvIPMI::setDeviceSystem(&device);
}

void IpmiTest::TearDown() { zuvIPMI::setDeviceSystem(parkingDevice()); }

std::unique_ptr<zuvIPMIService> IpmiTest::makeService() {
    auto service = std::make_unique<zuvIPMIService>(64);
    device.clearRecord();
    log.mark();
    return service;
}

uint16_t le16(const std::vector<uint8_t>& bytes, size_t at) {
    return static_cast<uint16_t>(bytes.at(at) | bytes.at(at + 1) << 8);
}

}  // namespace ipmitest
