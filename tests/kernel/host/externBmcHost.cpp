// Serves QEMU's external BMC device from the simulated RMC while the guest runs, then checks
// that the block command the guest sent reached the RMC whole.
// Usage: zuvKernelExternHost <socket> <command running QEMU...>; QEMU's output passes through.
#include "externScenario.h"
#include "zuvBmcExternServer.h"
#include "zuvSimRmc.h"

#include <sys/wait.h>

#include <cstdio>

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    zuvsim::SimulatedRmc rmc;
    rmc.setDoorBell(0x83, zuvkernel::kIofwuDoorBell);
    zuvsim::ExternBmcServer server(argv[1], [&rmc](const zuvsim::ExternRequest& r) {
        if (r.netFn == zuvkernel::kSilentNetFn && r.cmd == zuvkernel::kSilentCmd) {
            return zuvsim::ExternReply{zuvsim::ExternReply::Action::Silent, 0, {}};
        }
        const zuvsim::Response response = rmc.handle(r.netFn, r.cmd, r.data);
        return zuvsim::ExternReply{zuvsim::ExternReply::Action::Answer, response.completionCode, response.body};
    });
    const int status = server.serveDuring(argv + 2);

    const auto commands = rmc.commands();
    const std::string text = zuvkernel::externEventText();
    const bool whole = commands.size() == 1 && commands[0].name == "MPEventGen" && commands[0].text() == text &&
                       commands[0].argumentLength == text.size() + 1 && commands[0].blocks == 6 &&
                       commands[0].complete && commands[0].faults.empty();
    std::printf("HOST %s: one MPEventGen command of 6 blocks, whole and without fault\n", whole ? "OK" : "FAILED");
    return whole && WIFEXITED(status) && WEXITSTATUS(status) == 0 ? 0 : 1;
}
