// The service's pipe under load: waves of zuvCli processes started at once against the
// simulated service, on the library's road (with the IPMI pause taken as none) or with scripted
// answers. One iteration is one wave. The counters give the requests, the failures (a client
// that did not end with status 0 and the sent line) and the requests per second. Runs in the
// test sandbox, as the service needs the product's fixed paths.
#include "zuvProcess.h"
#include "zuvSandbox.h"
#include "zuvSmbiosImage.h"

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

extern char** environ;

namespace {

const char* const kSent = "ZUVCli: Test Event sent to RMC. Please check logs for details.\n";

std::string outputOf(int client) { return "/tmp/bench-client" + std::to_string(client); }

// zuvCli -t 708 -l <a location of the client's own>, its output into a file of its own.
pid_t startClient(int client) {
    char location[24];  // 16 characters for every client of a run
    std::snprintf(location, sizeof location, "LOCATION%08d", client);
    const std::string output = outputOf(client);
    std::vector<char*> argv{const_cast<char*>(ZUV_CLI_PATH),
                            const_cast<char*>("-t"),
                            const_cast<char*>("708"),
                            const_cast<char*>("-l"),
                            location,
                            nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    pid_t pid = -1;
    if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) != 0) pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

void BM_Waves(benchmark::State& state, std::vector<std::string> serviceOptions) {
    unlink("/var/run/kelzuv");
    serviceOptions.insert(serviceOptions.begin(), ZUV_SIM_SERVICE_PATH);
    zuvtest::BackgroundProcess service;
    service.start(serviceOptions);
    if (!zuvtest::waitForPath("/var/run/kelzuv")) state.SkipWithError("the service made no pipe");
    const int wave = static_cast<int>(state.range(0));
    double requests = 0, failures = 0;
    for (auto _ : state) {
        std::vector<pid_t> clients;
        for (int i = 0; i < wave; ++i) clients.push_back(startClient(i));
        for (int i = 0; i < wave; ++i) {
            int status = -1;
            const bool ended = clients[i] > 0 && waitpid(clients[i], &status, 0) == clients[i];
            if (!ended || !WIFEXITED(status) || WEXITSTATUS(status) != 0 || zuvtest::readFile(outputOf(i)) != kSent)
                ++failures;
        }
        requests += wave;
    }
    state.counters["requests"] = requests;
    state.counters["failures"] = failures;
    state.counters["requests/s"] = benchmark::Counter(requests, benchmark::Counter::kIsRate);
}
BENCHMARK_CAPTURE(BM_Waves, road, {"--rmc", "sim", "--rmc-pause", "none"})
    ->Arg(50)
    ->Iterations(10)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Waves, scripted, {})->Arg(50)->Iterations(10)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Waves, road, {"--rmc", "sim", "--rmc-pause", "none"})
    ->Arg(1)
    ->Iterations(100)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    zuvtest::enterSandbox();
    zuvtest::writeConfig(R"({"CliMode":"test","EnableResources":["All"],"LoggingLevel":"Warning"})");
    zuvtest::makeDirectories("/vmfs/devices/char/mem");
    zuvsim::SmbiosImage().addType1("PLATFAMILY00001").writeTo("/vmfs/devices/char/mem/smbios");
    zuvtest::writeFile("/bin/localcli", "#!/bin/sh\necho '   Version: 8.0.3'\n");
    chmod("/bin/localcli", 0755);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
