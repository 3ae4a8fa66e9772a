// zuvCli as an administrator meets it: one process per request. The benchmark plays the service
// itself (reads the request from /var/run/kelzuv, answers on the reply pipe) inside the test
// sandbox, and times spawn to first packet, spawn to exit, and the cost before main.
#include "channel/zuvPipeChannel.h"
#include "zuvSandbox.h"

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;

pid_t spawn(std::initializer_list<const char*> args) {
    std::vector<char*> argv;
    for (const char* a : args) argv.push_back(const_cast<char*>(a));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t quiet;  // the client's result line would only clutter the report
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
    pid_t pid = -1;
    if (posix_spawn(&pid, argv[0], &quiet, nullptr, argv.data(), environ) != 0) std::abort();
    posix_spawn_file_actions_destroy(&quiet);
    return pid;
}

// Serves one request; returns when the packet has been read (t1) and the answer written.
void serveOne(Clock::time_point& firstPacket) {
    zuvPipePacket request{};
    if (!zuvReadPipe("/var/run/kelzuv", &request)) std::abort();
    firstPacket = Clock::now();
    int32_t code = 0;
    zuvPipePacket reply{};
    reply.payloadLength = sizeof code;
    reply.payload = reinterpret_cast<char*>(&code);
    const std::string replyPipe = "/var/run/kelzuvcli" + std::to_string(request.senderPid);
    free(request.payload);
    if (!zuvWritePipe(replyPipe.c_str(), &reply)) std::abort();
}

void BM_TestEventSpawnToFirstPacket(benchmark::State& state) {
    for (auto _ : state) {
        const auto start = Clock::now();
        const pid_t client = spawn({ZUV_CLI_PATH, "-t", "708"});
        Clock::time_point firstPacket;
        serveOne(firstPacket);
        waitpid(client, nullptr, 0);
        state.SetIterationTime(std::chrono::duration<double>(firstPacket - start).count());
    }
}
BENCHMARK(BM_TestEventSpawnToFirstPacket)->UseManualTime()->Unit(benchmark::kMicrosecond);

void BM_TestEventRoundTripSpawnToExit(benchmark::State& state) {
    for (auto _ : state) {
        const pid_t client = spawn({ZUV_CLI_PATH, "-t", "708"});
        Clock::time_point firstPacket;
        serveOne(firstPacket);
        int status = 0;
        waitpid(client, &status, 0);
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) state.SkipWithError("zuvCli failed");
    }
}
BENCHMARK(BM_TestEventRoundTripSpawnToExit)->Unit(benchmark::kMicrosecond);

void spawnAndWait(benchmark::State& state, const char* program) {
    for (auto _ : state) waitpid(spawn({program}), nullptr, 0);
}
void BM_EmptyProgramSpawnToExit(benchmark::State& state) { spawnAndWait(state, ZUV_EMPTY_PLAIN); }
void BM_EmptyMainLinkedLikeZuvCli(benchmark::State& state) { spawnAndWait(state, ZUV_EMPTY_LINKED); }
BENCHMARK(BM_EmptyProgramSpawnToExit)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_EmptyMainLinkedLikeZuvCli)->Unit(benchmark::kMicrosecond);

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
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
