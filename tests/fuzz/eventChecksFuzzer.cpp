// libFuzzer harness over the client's checks: the input is the text of -p, the contents of a -f
// file and the argument of -t. Each ends in std::runtime_error or in a send that fails at once
// (no service pipe in the sandbox); any other exception or a reply pipe left behind is a finding.
#include <unistd.h>

#include <functional>
#include <stdexcept>

#include "fuzzHarness.h"
#include "zuvCliHandler.h"
#include "zuvSandbox.h"

const char* const kEventFile = "/tmp/event.json";

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = textOf(data, size);
    zuvtest::writeFile(kEventFile, text);
    zuvCliHandler& handler = zuvCliHandler::getInstance();
    const std::function<void()> checks[] = {
        [&] { handler.handleJsonPacket(text); },
        [&] { handler.handleJsonFile(kEventFile); },
        [&] { handler.checkTestEvent(text); },
    };
    for (const auto& check : checks) {
        try {
            check();
        } catch (const std::runtime_error&) {
        }
    }
    if (zuvtest::fileExists("/var/run/kelzuvcli" + std::to_string(getpid()))) abort();
    return 0;
}
