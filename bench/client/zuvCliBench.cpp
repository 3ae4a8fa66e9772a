// zuvCli against the least programs that do its exchange, as an administrator meets them: one
// process per request. The benchmark plays the service (reads each request from
// /var/run/kelzuv, answers on the reply pipe) inside the test sandbox and runs, round after
// round and in rotating order, so that the machine's load hits all alike:
//   c      the exchange in C,
//   cxx    the same source built as C++ and linked with jsoncpp as zuvCli is,
//   zuvCli "zuvCli -t 708".
// Per client it reports the median wall time from spawn to exit, the spread (10th and 90th
// percentile), the median CPU time (user + system), the time and CPU spent before main (from a
// second set of runs with a preloaded stamp, see mainEntryStamp.c) and the ratios zuvCli/cxx
// and cxx/c. Other builds of zuvCli can join the same rounds, for comparing a change
// against the tree's build: bench_client --also=label:/path/to/zuvCli ...
#include "channel/zuvPipeChannel.h"
#include "zuvSandbox.h"

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

extern char** environ;

namespace {

struct Client {
    std::string name;
    std::vector<std::string> argv;
};

// The two floors first, then zuvCli and the builds given with --also.
std::vector<Client> clients = {
    {"c", {ZUV_FLOOR_C, "708"}},
    {"cxx", {ZUV_FLOOR_CXX, "708"}},
    {"zuvCli", {ZUV_CLI_PATH, "-t", "708"}},
};

struct Samples {
    std::vector<double> wall, cpu, wallToMain, cpuToMain;  // milliseconds
};

double milliseconds(long long nanoseconds) { return static_cast<double>(nanoseconds) / 1e6; }

long long monotonicNow() {
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return t.tv_sec * 1000000000LL + t.tv_nsec;
}

// Answers one request with result code 0.
void serveOne() {
    zuvPipePacket request{};
    if (!zuvReadPipe("/var/run/kelzuv", &request)) std::abort();
    const std::string replyPipe = "/var/run/kelzuvcli" + std::to_string(request.senderPid);
    free(request.payload);
    int32_t code = 0;
    zuvPipePacket reply{};
    reply.payloadLength = sizeof code;
    reply.payload = reinterpret_cast<char*>(&code);
    if (!zuvWritePipe(replyPipe.c_str(), &reply)) std::abort();
}

// One request of one client. With a stamp pipe the client runs with the main-entry stamp
// preloaded, writes the time and CPU before its main into the pipe, and only those are kept.
void runOnce(const Client& client, const int* stampPipe, Samples& samples) {
    std::vector<char*> argv;
    for (const std::string& a : client.argv) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    std::vector<std::string> envText;
    for (char** e = environ; *e != nullptr; ++e) envText.push_back(*e);
    if (stampPipe != nullptr) {
        envText.push_back(std::string("LD_PRELOAD=") + ZUV_MAIN_STAMP);
        envText.push_back("ZUV_BENCH_STAMP_FD=" + std::to_string(stampPipe[1]));
    }
    std::vector<char*> env;
    for (std::string& e : envText) env.push_back(e.data());
    env.push_back(nullptr);

    posix_spawn_file_actions_t quiet;  // the result line would only clutter the report
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
    const long long start = monotonicNow();
    pid_t pid = -1;
    if (posix_spawn(&pid, argv[0], &quiet, nullptr, argv.data(), env.data()) != 0) std::abort();
    serveOne();
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    const long long end = monotonicNow();
    posix_spawn_file_actions_destroy(&quiet);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) std::abort();
    if (stampPipe == nullptr) {
        samples.wall.push_back(milliseconds(end - start));
        samples.cpu.push_back((usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3 +
                              (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3);
        return;
    }
    char line[64] = {};
    long long atMain = 0, cpuAtMain = 0;
    if (read(stampPipe[0], line, sizeof line - 1) <= 0 || std::sscanf(line, "%lld %lld", &atMain, &cpuAtMain) != 2)
        std::abort();
    samples.wallToMain.push_back(milliseconds(atMain - start));
    samples.cpuToMain.push_back(milliseconds(cpuAtMain));
}

double percentile(std::vector<double> values, double fraction) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1) + 0.5)];
}

void BM_ClientsInterleaved(benchmark::State& state) {
    const int rounds = static_cast<int>(state.range(0));
    int stampPipe[2];
    if (pipe(stampPipe) != 0) std::abort();
    const std::size_t count = clients.size();
    std::vector<Samples> samples(count);
    for (auto _ : state) {
        for (int round = 0; round < rounds; ++round) {
            for (std::size_t i = 0; i < count; ++i) {
                const std::size_t c = (round + i) % count;
                runOnce(clients[c], nullptr, samples[c]);
                runOnce(clients[c], stampPipe, samples[c]);
            }
        }
    }
    std::vector<double> medians(count);
    for (std::size_t c = 0; c < count; ++c) {
        const std::string& name = clients[c].name;
        medians[c] = percentile(samples[c].wall, 0.5);
        if (c >= 2) state.counters["ratio_" + name + "_cxx"] = medians[c] / medians[1];
        state.counters[name + "_ms"] = medians[c];
        state.counters[name + "_ms_p10"] = percentile(samples[c].wall, 0.1);
        state.counters[name + "_ms_p90"] = percentile(samples[c].wall, 0.9);
        state.counters[name + "_cpu_ms"] = percentile(samples[c].cpu, 0.5);
        state.counters[name + "_to_main_ms"] = percentile(samples[c].wallToMain, 0.5);
        state.counters[name + "_cpu_to_main_ms"] = percentile(samples[c].cpuToMain, 0.5);
    }
    state.counters["ratio_cxx_c"] = medians[1] / medians[0];
    close(stampPipe[0]);
    close(stampPipe[1]);
}
BENCHMARK(BM_ClientsInterleaved)->Arg(150)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    std::string why;
    if (!zuvtest::enterSandbox(&why)) {
        std::fprintf(stderr, "bench_client needs the test sandbox (root): %s\n", why.c_str());
        return 1;
    }
    zuvtest::writeConfig(R"({"CliMode":"test","LoggingLevel":"Warning"})");
    zuvCreatePipe("/var/run/kelzuv");
    benchmark::Initialize(&argc, argv);
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const std::size_t colon = arg.find(':');
        if (arg.rfind("--also=", 0) != 0 || colon == std::string::npos) {
            std::fprintf(stderr, "unknown argument %s\n", argv[i]);
            return 1;
        }
        clients.push_back({arg.substr(7, colon - 7), {arg.substr(colon + 1), "-t", "708"}});
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
