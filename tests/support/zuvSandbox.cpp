#include "zuvSandbox.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace zuvtest {
namespace {

bool sandboxed = false;

const char* const kStage = "/tmp";  // a tmpfs is mounted here first, privately
const char* const kNewRoot = "/tmp/zuv-sandbox-root";

// Top-level entries that the sandbox gives a fresh empty tmpfs instead of the machine's.
const char* const kPrivateTops[] = {"tmp", "opt", "run", "scratch", "vmfs", "dev", "bin"};

bool fail(std::string* why, const std::string& what) {
    if (why) *why = what + ": " + std::strerror(errno);
    return false;
}

bool isPrivateTop(const std::string& name) {
    for (const char* top : kPrivateTops)
        if (name == top) return true;
    return false;
}

bool mountTmpfs(const std::string& path) { return mount("zuvsandbox", path.c_str(), "tmpfs", 0, "mode=0755") == 0; }

bool bindInto(const std::string& from, const std::string& to, bool directory) {
    if (directory) {
        if (mkdir(to.c_str(), 0755) != 0 && errno != EEXIST) return false;
    } else {
        const int fd = open(to.c_str(), O_CREAT | O_WRONLY, 0644);
        if (fd < 0) return false;
        close(fd);
    }
    return mount(from.c_str(), to.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0;
}

// Every top-level entry of the machine's root, bound or linked into the new root.
bool populateRoot(const std::string& root, std::string* why) {
    DIR* dir = opendir("/");
    if (!dir) return fail(why, "opendir /");
    bool ok = true;
    while (dirent* entry = readdir(dir)) {
        const std::string name = entry->d_name;
        if (name == "." || name == ".." || isPrivateTop(name) || name == "var") continue;
        const std::string from = "/" + name;
        const std::string to = root + "/" + name;
        struct stat st {};
        if (lstat(from.c_str(), &st) != 0) continue;
        if (S_ISLNK(st.st_mode)) {
            char target[4096];
            const ssize_t n = readlink(from.c_str(), target, sizeof target - 1);
            if (n < 0 || symlink(std::string(target, n).c_str(), to.c_str()) != 0) {
                ok = fail(why, "link " + to);
                break;
            }
        } else if (!bindInto(from, to, S_ISDIR(st.st_mode))) {
            ok = fail(why, "bind " + from);
            break;
        }
    }
    closedir(dir);
    return ok;
}

// /var is the machine's, but for /var/log (private) and /var/run (a link to /run, private).
bool populateVar(const std::string& root, std::string* why) {
    const std::string var = root + "/var";
    if (!mountTmpfs((mkdir(var.c_str(), 0755), var))) return fail(why, "tmpfs /var");
    DIR* dir = opendir("/var");
    if (!dir) return fail(why, "opendir /var");
    bool ok = true;
    while (dirent* entry = readdir(dir)) {
        const std::string name = entry->d_name;
        if (name == "." || name == ".." || name == "log" || name == "run") continue;
        struct stat st {};
        const std::string from = "/var/" + name;
        if (lstat(from.c_str(), &st) != 0) continue;
        if (S_ISLNK(st.st_mode)) {
            char target[4096];
            const ssize_t n = readlink(from.c_str(), target, sizeof target - 1);
            if (n >= 0) symlink(std::string(target, n).c_str(), (var + "/" + name).c_str());
        } else if (!bindInto(from, var + "/" + name, S_ISDIR(st.st_mode))) {
            ok = fail(why, "bind " + from);
            break;
        }
    }
    closedir(dir);
    if (ok && mkdir((var + "/log").c_str(), 0755) != 0) ok = fail(why, "mkdir /var/log");
    if (ok && symlink("/run", (var + "/run").c_str()) != 0) ok = fail(why, "link /var/run");
    return ok;
}

// /bin is a link to usr/bin on the machine; the sandbox makes it a private directory of links
// to the machine's programs, so that a test can place a tool at an absolute /bin path.
bool populateBin(const std::string& root, std::string* why) {
    const std::string bin = root + "/bin";
    if (mkdir(bin.c_str(), 0755) != 0) return fail(why, "mkdir /bin");
    DIR* dir = opendir("/bin");
    if (!dir) return fail(why, "opendir /bin");
    while (dirent* entry = readdir(dir)) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        symlink(("/usr/bin/" + name).c_str(), (bin + "/" + name).c_str());
    }
    closedir(dir);
    return true;
}

bool populateDev(const std::string& root, std::string* why) {
    const std::string dev = root + "/dev";
    mkdir(dev.c_str(), 0755);
    if (!mountTmpfs(dev)) return fail(why, "tmpfs /dev");
    for (const char* node : {"null", "zero", "full", "random", "urandom", "tty", "ptmx"}) {
        if (access((std::string("/dev/") + node).c_str(), F_OK) != 0) continue;
        if (!bindInto(std::string("/dev/") + node, dev + "/" + node, false)) return fail(why, node);
    }
    for (const char* sub : {"pts", "shm"}) {
        if (access((std::string("/dev/") + sub).c_str(), F_OK) != 0) continue;
        if (!bindInto(std::string("/dev/") + sub, dev + "/" + sub, true)) return fail(why, sub);
    }
    symlink("/proc/self/fd", (dev + "/fd").c_str());
    symlink("/proc/self/fd/0", (dev + "/stdin").c_str());
    symlink("/proc/self/fd/1", (dev + "/stdout").c_str());
    symlink("/proc/self/fd/2", (dev + "/stderr").c_str());
    return true;
}

}  // namespace

bool inSandbox() { return sandboxed; }

bool enterSandbox(std::string* why) {
    if (sandboxed) return true;
    if (geteuid() != 0) {
        errno = EPERM;
        return fail(why, "the sandbox needs root");
    }
    char cwd[4096];
    if (!getcwd(cwd, sizeof cwd)) return fail(why, "getcwd");
    if (unshare(CLONE_NEWNS) != 0) return fail(why, "unshare(CLONE_NEWNS)");
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return fail(why, "make / private");
    if (!mountTmpfs(kStage)) return fail(why, "tmpfs stage");
    const std::string root = kNewRoot;
    if (mkdir(root.c_str(), 0755) != 0 || !mountTmpfs(root)) return fail(why, "new root");
    if (!populateRoot(root, why) || !populateVar(root, why) || !populateBin(root, why) || !populateDev(root, why))
        return false;
    for (const char* top : {"tmp", "opt", "run", "scratch", "vmfs"}) {
        const std::string path = root + "/" + top;
        mkdir(path.c_str(), 0755);
    }
    chmod((root + "/tmp").c_str(), 01777);
    if (chroot(root.c_str()) != 0) return fail(why, "chroot");
    if (chdir(cwd) != 0 && chdir("/") != 0) return fail(why, "chdir");
    sandboxed = true;
    return true;
}

void makeDirectories(const std::string& path) {
    for (size_t i = 1; i <= path.size(); ++i) {
        if (i != path.size() && path[i] != '/') continue;
        const std::string part = path.substr(0, i);
        if (mkdir(part.c_str(), 0755) != 0 && errno != EEXIST)
            throw std::runtime_error("mkdir " + part + ": " + std::strerror(errno));
    }
}

void writeFile(const std::string& path, const std::string& text) {
    const size_t slash = path.rfind('/');
    if (slash != std::string::npos && slash > 0) makeDirectories(path.substr(0, slash));
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
    if (!out.good()) throw std::runtime_error("write " + path);
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in.is_open()) throw std::runtime_error("read " + path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

bool fileExists(const std::string& path) {
    struct stat st {};
    return lstat(path.c_str(), &st) == 0;
}

void writeConfig(const std::string& json) { writeFile("/opt/kelzuv/vital/zuv.conf", json); }

namespace {
std::mutex collectorsMutex;
std::vector<SyslogCollector*> collectors;
}  // namespace

pid_t forkQuietly() {
    std::lock_guard<std::mutex> registry(collectorsMutex);
    for (SyslogCollector* collector : collectors) collector->running.lock();
    const pid_t child = fork();
    for (SyslogCollector* collector : collectors) collector->running.unlock();
    return child;
}

SyslogCollector::SyslogCollector() {
    socketFd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socketFd < 0) throw std::runtime_error("syslog collector: socket");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "/dev/log");
    unlink(address.sun_path);
    if (bind(socketFd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        close(socketFd);
        throw std::runtime_error(std::string("syslog collector: bind /dev/log: ") + std::strerror(errno));
    }
    if (pipe2(stopFd, O_CLOEXEC) != 0) throw std::runtime_error("syslog collector: pipe");
    reader = std::thread([this] { run(); });
    std::lock_guard<std::mutex> registry(collectorsMutex);
    collectors.push_back(this);
}

SyslogCollector::~SyslogCollector() {
    {
        std::lock_guard<std::mutex> registry(collectorsMutex);
        collectors.erase(std::find(collectors.begin(), collectors.end(), this));
    }
    (void)!write(stopFd[1], "x", 1);
    reader.join();
    close(stopFd[0]);
    close(stopFd[1]);
    close(socketFd);
    unlink("/dev/log");
}

void SyslogCollector::run() {
    pollfd fds[2] = {{socketFd, POLLIN, 0}, {stopFd[0], POLLIN, 0}};
    for (;;) {
        if (poll(fds, 2, -1) < 0 && errno != EINTR) return;
        if (fds[0].revents & POLLIN) {
            std::lock_guard<std::mutex> parked(running);
            drain();
        }
        if (fds[1].revents & POLLIN) return;
    }
}

// "<PRI>Mmm dd hh:mm:ss ident: message" as the C library sends it.
void SyslogCollector::drain() {
    std::lock_guard<std::mutex> lock(mutex);
    char buffer[65536];
    for (;;) {
        const ssize_t n = recv(socketFd, buffer, sizeof buffer, MSG_DONTWAIT);
        if (n <= 0) return;
        std::string text(buffer, n);
        SyslogLine line{6, 8, "", text};
        const size_t close = text.find('>');
        if (text[0] == '<' && close != std::string::npos) {
            const int pri = std::atoi(text.substr(1, close - 1).c_str());
            line.priority = pri & 7;
            line.facility = pri & ~7;
            std::string rest = text.substr(close + 1);
            if (rest.size() > 16 && rest[3] == ' ' && rest[15] == ' ') rest = rest.substr(16);  // timestamp
            const size_t colon = rest.find(": ");
            if (colon != std::string::npos) {
                line.ident = rest.substr(0, colon);
                line.message = rest.substr(colon + 2);
            } else {
                line.message = rest;
            }
        }
        received.push_back(line);
    }
}

std::vector<SyslogLine> SyslogCollector::lines() {
    drain();
    std::lock_guard<std::mutex> lock(mutex);
    return received;
}

std::vector<std::string> SyslogCollector::messages() {
    std::vector<std::string> out;
    for (const SyslogLine& line : lines()) out.push_back(line.message);
    return out;
}

void SyslogCollector::clear() {
    drain();
    std::lock_guard<std::mutex> lock(mutex);
    received.clear();
}

}  // namespace zuvtest
