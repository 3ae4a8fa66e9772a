#pragma once
// A private world for tests that must run the product with its fixed paths.
//
// enterSandbox() moves the calling process, while it is still single-threaded, into a private
// mount namespace whose root is a tmpfs: the machine's directories are bound back in, but
// /opt, /run (so /var/run), /var/log, /scratch, /tmp, /vmfs and /bin are empty or private,
// and /dev is a small private tree with the usual character devices and room for /dev/log.
// Nothing written there reaches the machine, and child processes inherit the namespace.

#include <mutex>
#include <sys/types.h>

#include <string>
#include <thread>
#include <vector>

namespace zuvtest {

// True once the process is inside the sandbox; on failure, why says what went wrong.
bool enterSandbox(std::string* why = nullptr);
bool inSandbox();

// Writes text to path, creating the parent directories; throws std::runtime_error on failure.
void writeFile(const std::string& path, const std::string& text);
// The whole content of path; throws std::runtime_error when it can't be read.
std::string readFile(const std::string& path);
bool fileExists(const std::string& path);
// mkdir -p.
void makeDirectories(const std::string& path);

// Writes /opt/kelzuv/vital/zuv.conf.
void writeConfig(const std::string& json);

struct SyslogLine {
    int priority;         // LOG_ERR, LOG_WARNING, ...
    int facility;         // LOG_USER, ...
    std::string ident;    // "zuv"
    std::string message;  // the text as the process passed it (a trailing line feed kept)
};

// fork() with every SyslogCollector's reader parked outside its locks and the allocator, so
// that the child never inherits a lock held by a reader thread. Tests fork only through this.
pid_t forkQuietly();

// Binds a datagram socket at /dev/log (inside the sandbox) and collects every line that
// arrives. A reader thread drains the socket at once, so senders never block on it.
class SyslogCollector {
public:
    SyslogCollector();
    ~SyslogCollector();
    SyslogCollector(const SyslogCollector&) = delete;
    SyslogCollector& operator=(const SyslogCollector&) = delete;

    // Everything received so far, oldest first (drains the socket first).
    std::vector<SyslogLine> lines();
    // Only the messages, in order.
    std::vector<std::string> messages();
    void clear();

private:
    void drain();
    void run();
    friend pid_t forkQuietly();

    std::mutex running;  // held by the reader while it drains; taken by forkQuietly to park it
    int socketFd = -1;
    int stopFd[2] = {-1, -1};
    std::mutex mutex;
    std::vector<SyslogLine> received;
    std::thread reader;
};

}  // namespace zuvtest
