// What the tables cost each process at start: spawn to exit of an empty program with and
// without them, and with only an empty std::regex (the locale it makes); the allocations, time and page faults before
// main that the program reports itself; and the in-process cost of building the vendor map, the largest of the tables,
// once its block is in place (what remains when page faults and cold caches are taken away).

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fcntl.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "tables/zuvDeviceLocationRules.h"
#include "tables/zuvPciVendorNames.h"

extern char** environ;

namespace {

struct StartFigures {
    long allocations = -1;
    long bytes = -1;
    long long wallNanoseconds = -1;
    long long cpuNanoseconds = -1;
    long pageFaults = -1;
};

// Runs the probe once and reads the line it prints.
StartFigures readFigures(const char* path) {
    StartFigures figures;
    FILE* out = popen(path, "r");
    if (out == nullptr) return figures;
    if (std::fscanf(out, "%ld %ld %lld %lld %ld", &figures.allocations, &figures.bytes, &figures.wallNanoseconds,
                    &figures.cpuNanoseconds, &figures.pageFaults) != 5)
        figures = StartFigures{};
    pclose(out);
    return figures;
}

void spawnAndWait(const char* path, benchmark::State& state) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    char* argv[] = {const_cast<char*>(path), nullptr};
    pid_t pid = 0;
    if (posix_spawn(&pid, path, &actions, nullptr, argv, environ) != 0) {
        state.SkipWithError("cannot spawn the probe");
        posix_spawn_file_actions_destroy(&actions);
        return;
    }
    int status = 0;
    waitpid(pid, &status, 0);
    posix_spawn_file_actions_destroy(&actions);
}

void processStart(benchmark::State& state, const char* path) {
    // Median of several runs of the self-reported figures, so one slow start doesn't decide.
    std::vector<long long> wall, cpu, faults;
    StartFigures figures;
    for (int i = 0; i < 21; ++i) {
        figures = readFigures(path);
        wall.push_back(figures.wallNanoseconds);
        cpu.push_back(figures.cpuNanoseconds);
        faults.push_back(figures.pageFaults);
    }
    std::sort(wall.begin(), wall.end());
    std::sort(cpu.begin(), cpu.end());
    std::sort(faults.begin(), faults.end());
    for (auto _ : state) spawnAndWait(path, state);
    state.counters["allocs_before_main"] = static_cast<double>(figures.allocations);
    state.counters["bytes_before_main"] = static_cast<double>(figures.bytes);
    state.counters["us_init_wall_median"] = static_cast<double>(wall[wall.size() / 2]) / 1000.0;
    state.counters["us_init_cpu_median"] = static_cast<double>(cpu[cpu.size() / 2]) / 1000.0;
    state.counters["faults_before_main"] = static_cast<double>(faults[faults.size() / 2]);
}

void BM_ProcessStartPlain(benchmark::State& state) { processStart(state, ZUV_START_PLAIN); }
void BM_ProcessStartWithTables(benchmark::State& state) { processStart(state, ZUV_START_LINKED); }
void BM_ProcessStartWithEmptyRegex(benchmark::State& state) { processStart(state, ZUV_START_REGEX); }

// The vendor map as the tables build it before main, in a block that is already in place.
void BM_BuildVendorMap(benchmark::State& state) {
    std::vector<char> block(pciVendorNameMapBytes);
    const zuvPciVendorNameRoom tablesRoom = pciVendorNameRoom;
    for (auto _ : state) {
        char* const begin = block.data();
        pciVendorNameRoom = {begin, begin, begin + block.size(), begin + block.size()};
        zuvPciVendorNameMap names;
        forEachPciVendorName(
            [&names](std::string_view key, std::string_view name) { names.emplace_hint(names.end(), key, name); });
        benchmark::DoNotOptimize(names);
    }
    pciVendorNameRoom = tablesRoom;
    state.counters["entries"] = static_cast<double>(pciVendorNameCount);
}

// Copying the five location rules, as the vector does at start.
void BM_CopyLocationRules(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<zuvDL::_ZUV_IO_GEOID_EXTRACTION_RULE> rules{zuvDL::geoIdType1Rule, zuvDL::geoIdType2Rule,
                                                                zuvDL::geoIdType4Rule, zuvDL::geoIdType5Rule,
                                                                zuvDL::geoIdType6Rule};
        benchmark::DoNotOptimize(rules);
    }
}

}  // namespace

BENCHMARK(BM_ProcessStartPlain)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ProcessStartWithTables)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ProcessStartWithEmptyRegex)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_BuildVendorMap)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CopyLocationRules)->Unit(benchmark::kNanosecond);

BENCHMARK_MAIN();
