#pragma once
// What tests run: a function in a forked child, a program with its output and a bound on its time, a
// program in the background, a call that may throw.

#include <cxxabi.h>
#include <sys/types.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

namespace zuvtest {

// "<type>: <what>" of the exception that the call raises; empty when it returns.
template <typename Call>
std::string thrown(Call&& call) {
    try {
        call();
    } catch (const std::exception& e) {
        std::unique_ptr<char, void (*)(void*)> type(abi::__cxa_demangle(typeid(e).name(), 0, 0, 0), std::free);
        return type.get() + std::string(": ") + e.what();
    }
    return "";
}

// For singletons built once per process, and exit().
struct ChildResult {
    std::string text;     // what the function returned
    int exitStatus = -1;  // 0 when the function returned; else the child's own exit status
};
ChildResult inChild(const std::function<std::string()>& body);

struct ProcessResult {
    int exitStatus = -1;  // exit status when the process exited, -1 when killed after the time limit
    std::string out;
    std::string err;
};
ProcessResult runProcess(const std::vector<std::string>& argv, int timeoutMs = 10000);

class BackgroundProcess {
public:
    BackgroundProcess() = default;
    ~BackgroundProcess() { stop(); }
    BackgroundProcess(const BackgroundProcess&) = delete;
    BackgroundProcess& operator=(const BackgroundProcess&) = delete;

    void start(const std::vector<std::string>& argv);
    void stop();                         // kills the process if it still runs, and reaps it
    int wait(int timeoutMs);             // its exit status once it ends by itself within timeoutMs, else -1
    pid_t pid() const { return child; }  // kept once the process has ended

private:
    pid_t child = -1;
    bool reaped = false;
};

// Polls every 2 ms until done() holds (true) or timeoutMs have gone by (false).
bool eventually(const std::function<bool()>& done, int timeoutMs);
bool waitForPath(const std::string& path, int timeoutMs = 5000);

}  // namespace zuvtest
