// zuvCli against the least programs that do its exchange, as an administrator meets them: one
// process per request. The benchmark plays the service (reads each request from
// /var/run/kelzuv, answers on the reply pipe) inside the test sandbox and runs round after
// round, each client once per round in a rotating order, so that the load of a shared machine
// hits all alike. A plain program rather than a Google Benchmark one, which would time one
// subject after the other:
//   c       the exchange in C,
//   cxx     the same source built as C++ and linked with jsoncpp as zuvCli is,
//   zuvCli  "zuvCli -t 708", and any other build of it given with --also=label:/path.
// Per client: the median wall time from spawn to exit and its spread (10th to 90th
// percentile), the median CPU time (user + system), and from a second run per round with a
// preloaded stamp (mainEntryStamp.c) the median time and CPU spent before main; then the ratios
// to cxx (of cxx to c).
#include "channel/zuvPipeChannel.h"
#include "zuvSandbox.h"

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
void runOnce(Client& client, const int* stampPipe) {
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
        client.wall.push_back(milliseconds(end - start));
        client.cpu.push_back((usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3 +
                             (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3);
        return;
    }
    char line[64] = {};
    long long atMain = 0, cpuAtMain = 0;
    if (read(stampPipe[0], line, sizeof line - 1) <= 0 || std::sscanf(line, "%lld %lld", &atMain, &cpuAtMain) != 2)
        std::abort();
    client.wallToMain.push_back(milliseconds(atMain - start));
    client.cpuToMain.push_back(milliseconds(cpuAtMain));
}

double percentile(std::vector<double> values, double fraction) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1) + 0.5)];
}

void printLoad(const char* when) {
    double load[3] = {};
    if (getloadavg(load, 3) == 3) std::printf("load average %s: %.2f %.2f %.2f\n", when, load[0], load[1], load[2]);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<Client> clients = {
        {"c", {ZUV_FLOOR_C, "708"}, {}, {}, {}, {}},
        {"cxx", {ZUV_FLOOR_CXX, "708"}, {}, {}, {}, {}},
        {"zuvCli", {ZUV_CLI_PATH, "-t", "708"}, {}, {}, {}, {}},
    };
    int rounds = 150;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const std::size_t colon = arg.find(':');
        if (arg.rfind("--rounds=", 0) == 0) {
            rounds = std::atoi(arg.c_str() + 9);
        } else if (arg.rfind("--also=", 0) == 0 && colon != std::string::npos) {
            clients.push_back({arg.substr(7, colon - 7), {arg.substr(colon + 1), "-t", "708"}, {}, {}, {}, {}});
        } else {
            std::fprintf(stderr, "usage: bench_client [--rounds=N] [--also=label:/path/to/zuvCli]...\n");
            return 2;
        }
    }
    zuvtest::enterSandbox();
    zuvtest::writeConfig(R"({"CliMode":"test","LoggingLevel":"Warning"})");
    zuvCreatePipe("/var/run/kelzuv");
    int stampPipe[2];
    if (pipe(stampPipe) != 0) return 1;

    printLoad("before");
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < clients.size(); ++i) {
            Client& client = clients[(round + i) % clients.size()];
            runOnce(client, nullptr);
            runOnce(client, stampPipe);
        }
    }
    printLoad("after");
    std::printf("%d rounds; milliseconds, medians unless said otherwise; ratios of the medians to cxx (cxx: to c)\n",
                rounds);
    std::printf("%-10s %8s %8s %8s %8s %8s %8s %8s %8s\n", "client", "wall", "p10", "p90", "cpu", "to main", "cpu main",
                "wall x", "cpu x");
    for (std::size_t i = 0; i < clients.size(); ++i) {
        const Client& c = clients[i];
        const Client& base = clients[i == 1 ? 0 : 1];
        std::printf("%-10s %8.2f %8.2f %8.2f %8.2f %8.2f %8.2f", c.name.c_str(), percentile(c.wall, 0.5),
                    percentile(c.wall, 0.1), percentile(c.wall, 0.9), percentile(c.cpu, 0.5),
                    percentile(c.wallToMain, 0.5), percentile(c.cpuToMain, 0.5));
        if (i > 0)
            std::printf(" %8.3f %8.3f", percentile(c.wall, 0.5) / percentile(base.wall, 0.5),
                        percentile(c.cpu, 0.5) / percentile(base.cpu, 0.5));
        std::printf("\n");
    }
    return 0;
}
