#include "zuvSimRmcReport.h"

#include <json/json.h>

#include <sstream>
#include <string>
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

size_t reportCommands(const SimulatedRmc& rmc, size_t from, std::FILE* out) {
    const std::vector<AssembledCommand> commands = rmc.commands();
    for (; from < commands.size(); ++from) {
        const AssembledCommand& command = commands[from];
        std::fprintf(out, "RMC received %s: %zu blocks, %u bytes with the terminating NUL%s\n", command.name.c_str(),
                     command.blocks, command.argumentLength, command.complete ? "" : ", incomplete");
        for (const std::string& fault : command.faults) std::fprintf(out, "RMC fault: %s\n", fault.c_str());
        std::fprintf(out, "%s\n", readable(command.text()).c_str());
    }
    return from;
}

}  // namespace zuvsim
