#pragma once
// The BMC side of QEMU's external BMC device: connects to the socket QEMU listens on, reads
// its requests and answers each through a handler, on a thread of its own. The handler can
// also leave a request unanswered, answer with a wrong checksum or drop the connection; after
// a drop the server connects again after a pause, as a restarted BMC would.

#include "zuvBmcExternCodec.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace zuvsim {

struct ExternReply {
    enum class Action { Answer, Silent, CorruptChecksum, Disconnect };
    Action action = Action::Answer;
    uint8_t completionCode = 0;
    std::vector<uint8_t> body;
};

class ExternBmcServer {
public:
    using Handler = std::function<ExternReply(const ExternRequest&)>;

    ExternBmcServer(std::string socketPath, Handler handler,
                    std::chrono::milliseconds reconnectPause = std::chrono::milliseconds(1500));
    ~ExternBmcServer();
    ExternBmcServer(const ExternBmcServer&) = delete;
    ExternBmcServer& operator=(const ExternBmcServer&) = delete;

    void start();
    // Ends the thread; the connection is closed.
    void stop();

    // Control commands QEMU sent (unescaped, without the end byte), over all connections.
    std::vector<std::vector<uint8_t>> controlCommands() const;
    int connections() const { return connectionCount.load(); }
    // Frames that were no valid request (short, bad checksum).
    int rejectedFrames() const { return rejected.load(); }

private:
    void run();
    int connect();
    // Serves one connection until QEMU closes it, the handler drops it or stop() is called.
    void serve(int fd);

    const std::string socketPath;
    const Handler handler;
    const std::chrono::milliseconds reconnectPause;
    std::thread worker;
    std::atomic<bool> stopping{false};
    int wakeRead = -1, wakeWrite = -1;
    std::atomic<int> connectionCount{0};
    std::atomic<int> rejected{0};
    mutable std::mutex mutex;
    std::vector<std::vector<uint8_t>> controls;
};

}  // namespace zuvsim
