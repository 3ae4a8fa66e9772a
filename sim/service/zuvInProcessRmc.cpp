#include "zuvInProcessRmc.h"

#include "ipmi/zuvIPMIDeviceSystem.h"

#include <json/json.h>
#include <unistd.h>

#include <climits>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace zuvsim {
namespace {

// The argument pretty-printed when it is JSON, else as it stands.
std::string readable(const std::string& argument) {
    Json::Value value;
    Json::CharReaderBuilder reader;
    std::string errors;
    std::istringstream in(argument);
    if (!Json::parseFromStream(reader, in, &value, &errors)) return argument;
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "    ";
    return Json::writeString(writer, value);
}

}  // namespace

void InProcessRmc::Device::sleepMicroseconds(uint64_t microseconds) {
    SimulatedRmcDevice::sleepMicroseconds(microseconds);
    if (realPause) usleep(static_cast<useconds_t>(microseconds));
}

InProcessRmc::InProcessRmc(const std::string& behave, bool realPause) : device(rmc, realPause) {
    if (behave == "lost")
        device.failNext(SimulatedRmcDevice::Step::Receive, INT_MAX);
    else if (behave != "normal")
        throw std::invalid_argument("unknown RMC behaviour " + behave);
    zuvIPMI::setDeviceSystem(&device);
}

InProcessRmc::~InProcessRmc() { zuvIPMI::setDeviceSystem(nullptr); }

void InProcessRmc::reportCommands(std::FILE* out) {
    const std::vector<AssembledCommand> commands = rmc.commands();
    for (; reported < commands.size(); ++reported) {
        const AssembledCommand& command = commands[reported];
        std::fprintf(out, "RMC received %s: %zu blocks, %u bytes with the terminating NUL%s\n", command.name.c_str(),
                     command.blocks, command.argumentLength, command.complete ? "" : ", incomplete");
        for (const std::string& fault : command.faults) std::fprintf(out, "RMC fault: %s\n", fault.c_str());
        std::fprintf(out, "%s\n", readable(command.text()).c_str());
    }
}

}  // namespace zuvsim
