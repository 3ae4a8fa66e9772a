// Serves QEMU's external BMC device from the simulated RMC while the guest runs, then checks
// that the block command the guest sent reached the RMC whole.
// Usage: zuvKernelExternHost <socket> <qemu> <qemu arguments...>; QEMU's output passes through.
#include "externScenario.h"
#include "zuvBmcExternServer.h"
#include "zuvSimRmc.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

using zuvsim::ExternReply;
using zuvsim::ExternRequest;

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s <socket> <qemu> [arguments...]\n", argv[0]);
        return 2;
    }
    zuvsim::SimulatedRmc rmc;
    rmc.setDoorBell(0x82, zuvkernel::kTelemetryDoorBell);
    rmc.setDoorBell(0x83, zuvkernel::kIofwuDoorBell);
    zuvsim::ExternBmcServer server(argv[1], [&rmc](const ExternRequest& r) {
        if (r.netFn == zuvkernel::kSilentNetFn && r.cmd == zuvkernel::kSilentCmd) {
            return ExternReply{ExternReply::Action::Silent, 0, {}};
        }
        const zuvsim::Response response = rmc.handle(r.netFn, r.cmd, r.data);
        return ExternReply{ExternReply::Action::Answer, response.completionCode, response.body};
    });
    server.start();
    const pid_t qemu = fork();
    if (qemu == 0) {
        execvp(argv[2], argv + 2);
        _exit(127);
    }
    int status = -1;
    waitpid(qemu, &status, 0);
    server.stop();

    const std::vector<zuvsim::AssembledCommand> commands = rmc.commands();
    int failures = 0;
    auto check = [&failures](bool ok, const char* what) {
        std::printf("%s: %s\n", ok ? "HOST OK" : "HOST FAILED", what);
        failures += !ok;
    };
    check(commands.size() == 1, "the RMC received one command");
    if (commands.size() == 1) {
        const zuvsim::AssembledCommand& c = commands[0];
        const std::string text = zuvkernel::externEventText();
        check(c.name == "MPEventGen", "its name is MPEventGen");
        check(c.text() == text && c.argumentLength == text.size() + 1, "its argument arrived whole");
        check(c.blocks == 6 && c.complete && c.faults.empty(), "in 6 blocks, complete, with no fault");
    }
    return failures == 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0 ? 0 : 1;
}
