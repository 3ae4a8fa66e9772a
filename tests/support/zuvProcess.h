#pragma once
// Running the real programs of the system from tests: a command with captured output and a
// bound on its run time, and a background process that is killed when the test is done.

#include <sys/types.h>

#include <string>
#include <vector>

namespace zuvtest {

struct ProcessResult {
    int exitStatus = -1;    // exit status when the process exited
    bool timedOut = false;  // killed by us after the time limit
    std::string out;
    std::string err;
};

// Runs argv[0] with argv; kills it after timeoutMs and reports timedOut.
ProcessResult runProcess(const std::vector<std::string>& argv, int timeoutMs = 10000);

class BackgroundProcess {
public:
    BackgroundProcess() = default;
    explicit BackgroundProcess(const std::vector<std::string>& argv) { start(argv); }
    ~BackgroundProcess() { stop(); }
    BackgroundProcess(const BackgroundProcess&) = delete;
    BackgroundProcess& operator=(const BackgroundProcess&) = delete;

    void start(const std::vector<std::string>& argv);
    bool running();
    // Kills the process (SIGKILL) if it still runs and reaps it.
    void stop();
    // Waits up to timeoutMs for the process to end on its own; its exit status, or -1.
    int wait(int timeoutMs);
    pid_t pid() const { return child; }

private:
    pid_t child = -1;
};

// Polls until path exists; false after timeoutMs.
bool waitForPath(const std::string& path, int timeoutMs = 5000);

}  // namespace zuvtest
