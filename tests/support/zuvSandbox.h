#pragma once
// A private world for tests that run the product with its fixed paths. enterSandbox() moves the
// process, while it is still single-threaded, into a private mount namespace whose root is a tmpfs
// with the machine's directories bound in, but /opt, /run (so /var/run), /var/log, /scratch, /tmp,
// /vmfs and /bin private, and /dev a small private tree with room for /dev/log. Nothing written
// there reaches the machine; child processes inherit the namespace.

#include <string>
#include <vector>

namespace zuvtest {

// Enters the sandbox, once, and sees its private paths private, or ends the process with status 1 and the reason.
void enterSandbox();

// File helpers; they throw std::runtime_error on failure. writeFile makes the parent directories.
void writeFile(const std::string& path, const std::string& text);
std::string readFile(const std::string& path);
bool fileExists(const std::string& path);  // links too, also when they lead nowhere
void makeDirectories(const std::string& path);
void writeConfig(const std::string& json);  // /opt/kelzuv/vital/zuv.conf

struct SyslogLine {
    int priority;         // facility and level: LOG_USER | LOG_WARNING, ...
    std::string ident;    // "zuv"
    std::string message;  // as the process passed it (a trailing line feed kept)
};

// Collects every line that reaches /dev/log (inside the sandbox).
class SyslogCollector {
public:
    SyslogCollector();
    ~SyslogCollector();
    SyslogCollector(const SyslogCollector&) = delete;
    SyslogCollector& operator=(const SyslogCollector&) = delete;

    std::vector<SyslogLine> lines();  // everything received so far, oldest first

private:
    int socketFd = -1;
    std::vector<SyslogLine> received;
};

}  // namespace zuvtest
