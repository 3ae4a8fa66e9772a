// Cost of the IPMI service's own work over the simulated RMC (no kernel, no pauses): loading an
// SDR repository of 200 records of mixed lengths, and transferring a 4096-byte event in blocks.
// Runs inside the test sandbox, since the logger reads its configuration from a fixed path.
#include "ipmi/zuvIPMIDeviceSystem.h"
#include "ipmi/zuvIPMIService.h"
#include "ipmi/zuvSDRRepositoryCache.h"
#include "log/zuvLogger.h"
#include "zuvSandbox.h"
#include "zuvSimRmc.h"
#include "zuvSimRmcDevice.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

namespace {

const size_t kRecords = 200;

// A simulated RMC behind the device seam for the length of one benchmark.
struct Rig {
    Rig() { zuvIPMI::setDeviceSystem(&device); }
    ~Rig() { zuvIPMI::setDeviceSystem(nullptr); }
    zuvsim::SimulatedRmc rmc;
    zuvsim::SimulatedRmcDevice device{rmc};
};

// Lengths 0 to 250, spread over the range, so records cost from 1 to 17 reads.
size_t lengthOf(size_t i) { return (i * 83) % 251; }

void BM_SdrRepositoryLoad(benchmark::State& state) {
    Rig r;
    size_t expected = 2;  // Get SDR Repository Info and Reserve SDR Repository
    for (size_t i = 0; i < kRecords; ++i) {
        r.rmc.addSdr(0x01, std::vector<uint8_t>(lengthOf(i), static_cast<uint8_t>(i)));
        expected += 1 + (lengthOf(i) + 15) / 16;
    }
    zuvIPMIService service(64);
    size_t transactions = 0;
    for (auto _ : state) {
        state.PauseTiming();
        r.rmc.clearRecord();
        r.device.clearRecord();
        state.ResumeTiming();
        zuvIPMI::SDRRepositoryCache cache(&service);
        benchmark::DoNotOptimize(cache.begin());
        state.PauseTiming();
        transactions = r.device.sent().size();
        if (static_cast<size_t>(cache.end() - cache.begin()) != kRecords || transactions != expected) {
            state.SkipWithError("the load took other transactions than 1 + ceil(length/16) per record");
            break;
        }
        state.ResumeTiming();
    }
    state.counters["transactions"] = static_cast<double>(transactions);
    state.counters["expected"] = static_cast<double>(expected);
    state.counters["time_per_record"] = benchmark::Counter(
        static_cast<double>(kRecords), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_SdrRepositoryLoad)->Unit(benchmark::kMillisecond);

void BM_EventTransfer4096(benchmark::State& state) {
    Rig r;
    const std::string event(4096, 'e');
    const size_t length = event.size() + 1;
    const size_t expected = 1 + (length - 33 + 56) / 57;
    zuvIPMIService service(64);
    size_t transactions = 0;
    for (auto _ : state) {
        state.PauseTiming();
        r.rmc.clearRecord();
        r.device.clearRecord();
        state.ResumeTiming();
        service.execCommand("MPEventGen", event);
        state.PauseTiming();
        transactions = r.device.sent().size();
        if (transactions != expected || r.device.sleeps().size() != 1) {
            state.SkipWithError("unexpected number of blocks or pauses");
            break;
        }
        state.ResumeTiming();
    }
    state.counters["transactions"] = static_cast<double>(transactions);
    state.counters["expected"] = static_cast<double>(expected);
}
BENCHMARK(BM_EventTransfer4096)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    zuvtest::enterSandbox();
    // Errors only, to a file: the figures are those of the IPMI code, not of the log.
    zuvtest::writeConfig(
        "{\"ZUVLogLocation\":\"/opt/kelzuv/logs/zuv.log\",\"DebugLogLocation\":\"/opt/kelzuv/logs/zuvdebug.log\","
        "\"EnableDebugLog\":false,\"LoggingLevel\":\"Error\"}");
    zuvLogger::getInstance();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
