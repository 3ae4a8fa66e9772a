#pragma once
// The BMC side of QEMU's external BMC device: connects to the socket QEMU listens on, reads
// its requests and answers each through a handler, on a thread of its own. The handler can
// also leave a request unanswered, as a hung BMC would.

#include "zuvBmcExternCodec.h"

#include <atomic>
#include <functional>
#include <string>
#include <thread>

namespace zuvsim {

struct ExternReply {
    enum class Action { Answer, Silent };
    Action action = Action::Answer;
    uint8_t completionCode = 0;
    std::vector<uint8_t> body;
};

class ExternBmcServer {
public:
    using Handler = std::function<ExternReply(const ExternRequest&)>;

    ExternBmcServer(std::string socketPath, Handler handler);
    ~ExternBmcServer();
    ExternBmcServer(const ExternBmcServer&) = delete;
    ExternBmcServer& operator=(const ExternBmcServer&) = delete;

    void start();
    // Ends the thread; the connection is closed.
    void stop();
    // Runs the command (QEMU, or a script that starts it) and serves until it ends; its output
    // passes through. Returns its wait status, or -1 when it could not be started.
    int serveDuring(char* const* command);

private:
    void run();
    // Waits for QEMU's socket and connects to it; -1 once stop() was called.
    int connect();
    // Serves the connection until QEMU closes it or stop() is called.
    void serve(int fd);

    const std::string socketPath;
    const Handler handler;
    std::thread worker;
    std::atomic<bool> stopping{false};
    int wakeRead = -1, wakeWrite = -1;
};

}  // namespace zuvsim
