#include "zuvProcess.h"

#include "zuvSandbox.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

namespace zuvtest {
namespace {

long long nowMs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000LL + now.tv_nsec / 1000000;
}

// The argument vector is built before the fork: the child only calls async-signal-safe functions.
std::vector<char*> argumentsOf(const std::vector<std::string>& argv) {
    std::vector<char*> args;
    for (const std::string& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    return args;
}

[[noreturn]] void execOrDie(const std::vector<char*>& args) {
    execvp(args[0], args.data());
    _exit(127);
}

int statusOf(int raw) { return WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw); }

}  // namespace

ProcessResult runProcess(const std::vector<std::string>& argv, int timeoutMs) {
    int outPipe[2], errPipe[2];
    if (pipe2(outPipe, O_CLOEXEC) != 0 || pipe2(errPipe, O_CLOEXEC) != 0) throw std::runtime_error("pipe");
    const std::vector<char*> args = argumentsOf(argv);
    const pid_t child = forkQuietly();
    if (child < 0) throw std::runtime_error("fork");
    if (child == 0) {
        dup2(outPipe[1], 1);
        dup2(errPipe[1], 2);
        const int devNull = open("/dev/null", O_RDONLY);
        if (devNull >= 0) dup2(devNull, 0);
        execOrDie(args);
    }
    close(outPipe[1]);
    close(errPipe[1]);
    ProcessResult result;
    const long long deadline = nowMs() + timeoutMs;
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    int open = 2;
    while (open > 0) {
        const long long left = deadline - nowMs();
        if (left <= 0) {
            result.timedOut = true;
            kill(child, SIGKILL);
            break;
        }
        if (poll(fds, 2, static_cast<int>(left)) < 0 && errno != EINTR) break;
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || !(fds[i].revents & (POLLIN | POLLHUP))) continue;
            char buffer[4096];
            const ssize_t n = read(fds[i].fd, buffer, sizeof buffer);
            if (n > 0) {
                (i == 0 ? result.out : result.err).append(buffer, n);
            } else {
                close(fds[i].fd);
                fds[i].fd = -1;
                --open;
            }
        }
    }
    for (const pollfd& fd : fds)
        if (fd.fd >= 0) close(fd.fd);
    int raw = 0;
    waitpid(child, &raw, 0);
    result.exitStatus = result.timedOut ? -1 : statusOf(raw);
    return result;
}

void BackgroundProcess::start(const std::vector<std::string>& argv) {
    stop();
    const std::vector<char*> args = argumentsOf(argv);
    child = forkQuietly();
    if (child < 0) throw std::runtime_error("fork");
    if (child == 0) execOrDie(args);
}

bool BackgroundProcess::running() {
    if (child <= 0) return false;
    int raw = 0;
    return waitpid(child, &raw, WNOHANG) == 0;
}

void BackgroundProcess::stop() {
    if (child <= 0) return;
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    child = -1;
}

int BackgroundProcess::wait(int timeoutMs) {
    const long long deadline = nowMs() + timeoutMs;
    while (child > 0) {
        int raw = 0;
        const pid_t done = waitpid(child, &raw, WNOHANG);
        if (done == child) {
            child = -1;
            return statusOf(raw);
        }
        if (nowMs() >= deadline) return -1;
        usleep(5000);
    }
    return -1;
}

bool waitForPath(const std::string& path, int timeoutMs) {
    const long long deadline = nowMs() + timeoutMs;
    struct stat st {};
    while (lstat(path.c_str(), &st) != 0) {
        if (nowMs() >= deadline) return false;
        usleep(2000);
    }
    return true;
}

}  // namespace zuvtest
