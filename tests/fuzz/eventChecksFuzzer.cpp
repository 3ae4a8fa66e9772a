// libFuzzer harness over the client's checks: the input is the text of -p, the contents of a -f
// file and the argument of -t. Each ends in std::runtime_error or in a send that fails at once
// (no service pipe in the sandbox); any other exception or a reply pipe left behind is a finding.
#include <unistd.h>

#include <fstream>
#include <stdexcept>

#include "fuzzHarness.h"
#include "zuvCliHandler.h"
#include "zuvSandbox.h"

namespace {

const char* const kEventFile = "/tmp/event.json";

template <typename Check>
void expectRuntimeError(Check check) {
    try {
        check();
    } catch (const std::runtime_error&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = textOf(data, size);
    std::ofstream(kEventFile, std::ios::binary | std::ios::trunc) << text;
    expectRuntimeError([&] { zuvCliHandler::getInstance().handleJsonPacket(text); });
    expectRuntimeError([&] { zuvCliHandler::getInstance().handleJsonFile(kEventFile); });
    expectRuntimeError([&] { zuvCliHandler::getInstance().checkTestEvent(text); });
    if (zuvtest::fileExists("/var/run/kelzuvcli" + std::to_string(getpid()))) abort();
    return 0;
}
