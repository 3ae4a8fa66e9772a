#include "zuvProcess.h"

#include "zuvSandbox.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <climits>
#include <stdexcept>

namespace zuvtest {
namespace {

// A child process that ends with the status body returns.
pid_t forkChild(const std::function<int()>& body) {
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("fork");
    if (child == 0) _exit(body());
    return child;
}

// Runs argv with no input; its arguments are built before the fork, so the child only makes system calls.
pid_t spawn(const std::vector<std::string>& argv, int out = 1, int err = 2) {
    std::vector<char*> args;
    for (const std::string& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    return forkChild([&] {
        if (dup2(out, 1) >= 0 && dup2(err, 2) >= 0 && dup2(open("/dev/null", O_RDONLY), 0) >= 0)
            execvp(args[0], args.data());
        return 127;
    });
}

// The exit status of child once it ends within timeoutMs, else -1.
int waitFor(pid_t child, int timeoutMs) {
    int raw = 0;
    if (!eventually([&] { return waitpid(child, &raw, WNOHANG) != 0; }, timeoutMs)) return -1;
    return WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
}

int memoryFile() {
    const int fd = memfd_create("zuvtest", MFD_CLOEXEC);
    return fd >= 0 ? fd : throw std::runtime_error("memfd_create");
}

// The whole text of a memory file, which is closed afterwards.
std::string contentOf(int fd) {
    std::string text(static_cast<size_t>(lseek(fd, 0, SEEK_END)), '\0');
    if (pread(fd, &text[0], text.size(), 0) != static_cast<ssize_t>(text.size())) text.clear();
    close(fd);
    return text;
}

}  // namespace

ChildResult inChild(const std::function<std::string()>& body) {
    const int shared = memoryFile();  // the child leaves its text here
    const pid_t child = forkChild([&] {
        std::string text;
        try {
            text = body();
        } catch (const std::exception& e) {
            text = std::string("exception: ") + e.what();
        }
        return write(shared, text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 125;
    });
    const int status = waitFor(child, INT_MAX);
    return {contentOf(shared), status};
}

ProcessResult runProcess(const std::vector<std::string>& argv, int timeoutMs) {
    const int out = memoryFile(), err = memoryFile();
    const pid_t child = spawn(argv, out, err);
    const int status = waitFor(child, timeoutMs);
    if (status == -1 && kill(child, SIGKILL) == 0) waitpid(child, nullptr, 0);
    return {status, contentOf(out), contentOf(err)};
}

void BackgroundProcess::start(const std::vector<std::string>& argv) {
    stop();
    child = spawn(argv);
    reaped = false;
}

void BackgroundProcess::stop() {
    if (child > 0 && !reaped && kill(child, SIGKILL) == 0) waitpid(child, nullptr, 0);
    reaped = true;
}

int BackgroundProcess::wait(int timeoutMs) {
    const int status = child > 0 && !reaped ? waitFor(child, timeoutMs) : -1;
    if (status != -1) reaped = true;
    return status;
}

bool eventually(const std::function<bool()>& done, int timeoutMs) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    for (; !done(); usleep(2000))
        if (std::chrono::steady_clock::now() >= deadline) return false;
    return true;
}

bool waitForPath(const std::string& path, int timeoutMs) {
    return eventually([&] { return fileExists(path); }, timeoutMs);
}

}  // namespace zuvtest
