// Boots the test guest with QEMU's external BMC device and serves it from the simulated RMC
// over the socket. Afterwards, for every phase, the RMC's record of the kernel run must equal,
// byte for byte, its record of the same calls made through the device seam.
#include "ipmi/zuvIPMIDeviceSystem.h"
#include "ipmi/zuvIPMIService.h"
#include "rmcScenarios.h"
#include "zuvBmcExternServer.h"
#include "zuvProcess.h"
#include "zuvSandbox.h"
#include "zuvSimRmc.h"
#include "zuvSimRmcDevice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace {

using zuvsim::ExternReply;
using zuvsim::ExternRequest;

struct PhaseRecord {
    std::vector<zuvsim::Request> requests;
    std::vector<zuvsim::AssembledCommand> commands;
};

// The host's side of the guest run: the phase markers, the faults of the fault phases, and
// the RMC logic for everything else.
class GuestSession {
public:
    ExternReply handle(const ExternRequest& request) {
        std::lock_guard<std::mutex> lock(mutex);
        if (request.netFn == zuvkernel::kMarkerNetFn && request.cmd == zuvkernel::kMarkerCmd) {
            finishPhase();
            phase.assign(request.data.begin(), request.data.end());
            rmc = std::make_unique<zuvsim::SimulatedRmc>();
            zuvkernel::configureRmc(phase, *rmc);
            phases.push_back(phase);
            return ExternReply{};
        }
        const zuvsim::Response response = rmc->handle(request.netFn, request.cmd, request.data);
        ExternReply reply{ExternReply::Action::Answer, response.completionCode, response.body};
        if (phase == "fault-silent" && request.netFn == 0x0A && request.cmd == 0x20) {
            reply.action = ExternReply::Action::Silent;
        } else if (phase == "fault-checksum" && request.netFn == 0x0A && request.cmd == 0x22) {
            reply.action = ExternReply::Action::CorruptChecksum;
        } else if (phase == "fault-close" && request.netFn == 0x3A && request.cmd == 0x80 &&
                   rmc->countOf(0x3A, 0x80) == 2) {
            reply.action = ExternReply::Action::Disconnect;
        }
        return reply;
    }

    void finishPhase() {
        if (rmc) records[phase] = PhaseRecord{rmc->requests(), rmc->commands()};
    }

    std::mutex mutex;
    std::string phase = "boot";  // the kernel's own requests at driver load
    std::unique_ptr<zuvsim::SimulatedRmc> rmc = std::make_unique<zuvsim::SimulatedRmc>();
    std::vector<std::string> phases;
    std::map<std::string, PhaseRecord> records;
};

// The product's traffic: the RMC's network function and the storage commands. The kernel's
// own requests (network function 0x06, at load and from the watchdog driver) are left out.
std::vector<zuvsim::Request> productTraffic(const std::vector<zuvsim::Request>& all) {
    std::vector<zuvsim::Request> kept;
    for (const auto& r : all) {
        if (r.netFn == 0x3A || r.netFn == 0x0A) kept.push_back(r);
    }
    return kept;
}

size_t countOf(const std::vector<zuvsim::Request>& requests, uint8_t netFn, uint8_t cmd) {
    size_t n = 0;
    for (const auto& r : requests) n += r.netFn == netFn && r.cmd == cmd;
    return n;
}

std::string describe(const zuvsim::Request& r) {
    static const char* hex = "0123456789abcdef";
    std::string text{hex[r.netFn >> 4], hex[r.netFn & 15], '/', hex[r.cmd >> 4], hex[r.cmd & 15], ':'};
    for (uint8_t b : r.data) text += {' ', hex[b >> 4], hex[b & 15]};
    return text;
}

// The same phase through the device seam, on a fresh RMC set up the same way.
PhaseRecord seamRun(const std::string& phase) {
    zuvsim::SimulatedRmc rmc;
    zuvkernel::configureRmc(phase, rmc);
    zuvsim::SimulatedRmcDevice device(rmc);
    zuvIPMI::setDeviceSystem(&device);
    {
        zuvIPMIService service(64);
        zuvkernel::runPhase(phase, service);
    }
    zuvIPMI::setDeviceSystem(nullptr);
    return PhaseRecord{rmc.requests(), rmc.commands()};
}

std::string requiredEnv(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

}  // namespace

TEST(KernelExtern, RmcTrafficThroughTheDriverMatchesTheSeam) {
    const std::string vmlinuz = requiredEnv("ZUV_KERNEL_VMLINUZ");
    const std::string initrd = requiredEnv("ZUV_KERNEL_INITRD");
    const std::string consolePath = requiredEnv("ZUV_KERNEL_CONSOLE");
    ASSERT_FALSE(vmlinuz.empty() || initrd.empty()) << "run through runKernelTests.sh";
    zuvtest::writeConfig(
        R"({"ZUVLogLocation":"terminal","DebugLogLocation":"terminal","EnableDebugLog":false,"LoggingLevel":"Info"})");

    const std::string socketPath = "/tmp/zuv-kernel-bmc.sock";
    GuestSession session;
    zuvsim::ExternBmcServer server(socketPath, [&](const ExternRequest& r) { return session.handle(r); });
    server.start();
    const zuvtest::ProcessResult qemu =
        zuvtest::runProcess({"qemu-system-x86_64",
                             "-m",
                             "512",
                             "-smp",
                             "1",
                             "-nographic",
                             "-no-reboot",
                             "-accel",
                             "tcg",
                             "-kernel",
                             vmlinuz,
                             "-initrd",
                             initrd,
                             "-append",
                             "console=ttyS0 quiet panic=-1 zuvmode=extern zuvfilter=DriverLoading.*:Extern.*",
                             "-chardev",
                             "socket,id=ipmi0,path=" + socketPath + ",server=on,wait=off",
                             "-device",
                             "ipmi-bmc-extern,id=bmc0,chardev=ipmi0",
                             "-device",
                             "isa-ipmi-kcs,bmc=bmc0"},
                            150000);
    server.stop();
    {
        std::lock_guard<std::mutex> lock(session.mutex);
        session.finishPhase();
    }
    if (!consolePath.empty()) std::ofstream(consolePath) << qemu.out << qemu.err;

    ASSERT_FALSE(qemu.timedOut) << qemu.out;
    EXPECT_NE(std::string::npos, qemu.out.find("ZUVK EXIT main 0")) << qemu.out;
    EXPECT_NE(std::string::npos, qemu.out.find("[  PASSED  ] 9 tests")) << qemu.out;
    // QEMU opens each connection with its protocol version and capabilities.
    ASSERT_FALSE(server.controlCommands().empty());
    EXPECT_EQ((std::vector<uint8_t>{0xFF, 0x01}), server.controlCommands()[0]);

    // Each guest test announces its phase; their order is the test program's business.
    std::vector<std::string> expectedPhases = zuvkernel::comparedPhases();
    for (const auto& p : zuvkernel::faultPhases()) expectedPhases.push_back(p);
    expectedPhases.push_back("after-close");
    expectedPhases.push_back("manager");
    expectedPhases.push_back("measure");
    std::sort(expectedPhases.begin(), expectedPhases.end());
    std::vector<std::string> phases = session.phases;
    std::sort(phases.begin(), phases.end());
    EXPECT_EQ(expectedPhases, phases);

    // The kernel asked for the device id when ipmi_si loaded, before any phase.
    EXPECT_GE(session.records["boot"].requests.size(), 1u);
    EXPECT_EQ(0u, productTraffic(session.records["boot"].requests).size());

    for (const std::string& phase : zuvkernel::comparedPhases()) {
        SCOPED_TRACE(phase);
        const auto kernel = productTraffic(session.records[phase].requests);
        const auto seam = productTraffic(seamRun(phase).requests);
        ASSERT_FALSE(seam.empty());
        ASSERT_EQ(seam.size(), kernel.size());
        for (size_t i = 0; i < seam.size(); ++i) EXPECT_EQ(describe(seam[i]), describe(kernel[i])) << i;
    }

    const auto& blocks = session.records["blocks"].commands;
    ASSERT_EQ(4u, blocks.size());
    const std::vector<std::pair<std::string, std::string>> sent{{"MPEventGen", zuvkernel::eventText()},
                                                                {"WriteInventory", zuvkernel::inventoryText()},
                                                                {"WriteTelemetry", zuvkernel::telemetryText()},
                                                                {"WriteAppTelemetry", zuvkernel::appTelemetryText()}};
    const std::vector<size_t> blockCounts{6, 4, 1, 2};
    for (size_t i = 0; i < blocks.size(); ++i) {
        EXPECT_EQ(sent[i].first, blocks[i].name);
        EXPECT_EQ(sent[i].second, blocks[i].text());
        EXPECT_EQ(sent[i].second.size() + 1, blocks[i].argumentLength);
        EXPECT_TRUE(blocks[i].complete) << blocks[i].name;
        EXPECT_TRUE(blocks[i].faults.empty()) << blocks[i].name << ": " << blocks[i].faults.front();
        EXPECT_EQ(blockCounts[i], blocks[i].blocks) << blocks[i].name;
    }
    EXPECT_NE(std::string::npos,
              qemu.out.find("Transfer Status is 0x5[Provided command not supported] and Cmd Exit Status is 0x9"));

    // Faults: one request each, not repeated by the driver; the dropped connection leaves the
    // command cut after its second block and the BMC connects again.
    EXPECT_EQ(1u, countOf(session.records["fault-silent"].requests, 0x0A, 0x20));
    EXPECT_EQ(1u, countOf(session.records["fault-checksum"].requests, 0x0A, 0x22));
    const auto& cut = session.records["fault-close"].commands;
    ASSERT_EQ(1u, cut.size());
    EXPECT_EQ(2u, cut[0].blocks);
    EXPECT_FALSE(cut[0].complete);
    EXPECT_EQ(2, server.connections());

    // The manager's worker: the task that was running first, then the queued ones by priority.
    const auto& managed = session.records["manager"].commands;
    const std::vector<std::pair<std::string, std::string>> delivered{{"WriteAppTelemetry", "app=1"},
                                                                     {"MPEventGen", ""},
                                                                     {"WriteInventory", std::string(100, 'v')},
                                                                     {"WriteTelemetry", "cpu=42"}};
    ASSERT_EQ(delivered.size(), managed.size());
    for (size_t i = 0; i < managed.size(); ++i) {
        EXPECT_EQ(delivered[i].first, managed[i].name);
        EXPECT_TRUE(managed[i].complete && managed[i].faults.empty()) << managed[i].name;
        if (!delivered[i].second.empty()) {
            EXPECT_EQ(delivered[i].second, managed[i].text());
        }
    }
    const std::string event = managed[1].text();
    for (const char* part : {"708", "guest-host", "kernel test", "2026-11-23T08:00:00Z"}) {
        EXPECT_NE(std::string::npos, event.find(part)) << part << " not in " << event;
    }
}
