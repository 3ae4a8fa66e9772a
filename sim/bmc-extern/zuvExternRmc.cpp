// The simulated RMC behind QEMU's external BMC device, for a demo in the guest: serves the
// socket while the command that runs QEMU lasts, then prints what the RMC received.
// Usage: zuvExternRmc <socket> <command running QEMU...>; QEMU's output passes through, and the
// exit status is the command's.
#include "zuvBmcExternServer.h"
#include "zuvSimRmc.h"
#include "zuvSimRmcReport.h"

#include <sys/wait.h>

#include <cstdio>
#include <map>
#include <utility>

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s <socket> <command running QEMU...>\n", argv[0]);
        return 2;
    }
    zuvsim::SimulatedRmc rmc;
    zuvsim::ExternBmcServer server(argv[1], [&rmc](const zuvsim::ExternRequest& r) {
        const zuvsim::Response response = rmc.handle(r.netFn, r.cmd, r.data);
        return zuvsim::ExternReply{zuvsim::ExternReply::Action::Answer, response.completionCode, response.body};
    });
    const int status = server.serveDuring(argv + 2);

    std::printf("--- on the host, what the RMC behind QEMU received (command, blocks, the argument put together):\n");
    zuvsim::reportCommands(rmc, 0, stdout);
    const auto polls = [&rmc](uint8_t cmd) { return rmc.countOf(zuvsim::SimulatedRmc::kRmcNetFn, cmd); };
    std::printf("RMC doorbells: none rung; polled: inventory %zu, telemetry %zu, IOFWU %zu\n", polls(0x81), polls(0x82),
                polls(0x83));
    // Every request by network function and command: the kernel driver's own (when ipmi_si and the
    // watchdog load) beside the product's.
    std::map<std::pair<unsigned, unsigned>, size_t> byCommand;
    for (const zuvsim::Request& request : rmc.requests()) ++byCommand[{request.netFn, request.cmd}];
    std::printf("RMC requests by netfn/cmd:");
    for (const auto& [key, count] : byCommand) std::printf(" %02x/%02x x%zu", key.first, key.second, count);
    std::printf("\n");
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
