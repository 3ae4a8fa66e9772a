#include "zuvSandbox.h"

#include <linux/magic.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>

namespace zuvtest {
namespace {

namespace fs = std::filesystem;
const std::string kNewRoot = "/tmp/zuv-sandbox-root";  // in a private tmpfs mounted on /tmp first

void check(bool ok, const std::string& what) {
    if (!ok) throw std::runtime_error(what + ": " + std::strerror(errno));
}

void mountTmpfs(const std::string& path) {
    fs::create_directories(path);
    check(mount("zuvsandbox", path.c_str(), "tmpfs", 0, "mode=0755") == 0, "tmpfs on " + path);
}

// Binds the machine's from (a link as what it leads to) at to, or does nothing where from isn't.
void bindInto(const fs::path& from, const fs::path& to) {
    if (!fs::exists(from)) return;
    fs::is_directory(from) ? (void)fs::create_directories(to) : std::ofstream(to).close();
    check(mount(from.c_str(), to.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0, "bind " + from.string());
}

void populate(const fs::path& root) {
    // The machine's top entries but the private ones: five empty directories, /dev and /bin. /var with
    // a private /var/log; /var/run is the private /run (a link to it here, else /run is bound over it).
    const std::set<std::string> privateTops = {"tmp", "opt", "run", "scratch", "vmfs", "dev", "bin"};
    for (const fs::directory_entry& entry : fs::directory_iterator("/"))
        if (!privateTops.count(entry.path().filename())) bindInto(entry.path(), root / entry.path().filename());
    for (const char* top : {"tmp", "opt", "run", "scratch", "vmfs", "bin"}) fs::create_directories(root / top);
    fs::permissions(root / "tmp", fs::perms::all | fs::perms::sticky_bit);
    mountTmpfs(root / "var/log");
    if (fs::exists("/var/run") && !fs::is_symlink("/var/run")) bindInto(root / "run", root / "var/run");
    // /bin: links to the machine's programs, so that a test can place a tool at an absolute /bin path.
    for (const fs::directory_entry& entry : fs::directory_iterator("/bin"))
        fs::create_symlink("/usr/bin" / entry.path().filename(), root / "bin" / entry.path().filename());
    // /dev: the usual devices, and room for /dev/log.
    mountTmpfs(root / "dev");
    for (const char* node : {"null", "zero", "full", "random", "urandom", "tty", "ptmx", "pts", "shm"})
        bindInto(fs::path("/dev") / node, root / "dev" / node);
}

}  // namespace

void enterSandbox() {
    try {
        const fs::path cwd = fs::current_path();
        check(geteuid() == 0, "the sandbox needs root");
        check(unshare(CLONE_NEWNS) == 0 && mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0,
              "a private mount namespace");
        mountTmpfs("/tmp");
        mountTmpfs(kNewRoot);
        populate(kNewRoot);
        check(chroot(kNewRoot.c_str()) == 0 && (chdir(cwd.c_str()) == 0 || chdir("/") == 0), "chroot");
        for (const char* path :
             {"/opt", "/run", "/var/run/", "/var/log", "/tmp", "/scratch", "/vmfs", "/dev", "/bin"}) {
            struct statfs fs {};
            check(statfs(path, &fs) == 0 && fs.f_type == TMPFS_MAGIC, std::string(path) + " is not private");
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "cannot enter the test sandbox: %s\n", e.what());
        std::exit(1);
    }
}

void makeDirectories(const std::string& path) { fs::create_directories(path); }

void writeFile(const std::string& path, const std::string& text) {
    if (const fs::path parent = fs::path(path).parent_path(); !parent.empty()) fs::create_directories(parent);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!(out << text)) throw std::runtime_error("write " + path);
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in.is_open()) throw std::runtime_error("read " + path);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

bool fileExists(const std::string& path) {
    struct stat st {};
    return lstat(path.c_str(), &st) == 0;
}

void writeConfig(const std::string& json) { writeFile("/opt/kelzuv/vital/zuv.conf", json); }

// A stream socket: the C library, refused as a datagram sender, connects as a stream, and the kernel
// holds each connection and its line ("<PRI>Mmm dd hh:mm:ss ident: message" and a NUL) until
// lines() takes them, so that no sender waits.
SyslogCollector::SyslogCollector() {
    sockaddr_un address{AF_UNIX, "/dev/log"};
    unlink(address.sun_path);
    socketFd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (socketFd < 0 || bind(socketFd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(socketFd, 4096) != 0)
        throw std::runtime_error(std::string("syslog collector at /dev/log: ") + std::strerror(errno));
}

SyslogCollector::~SyslogCollector() {
    close(socketFd);
    unlink("/dev/log");
}

std::vector<SyslogLine> SyslogCollector::lines() {
    char buffer[65536];
    for (int connection; (connection = accept4(socketFd, nullptr, nullptr, SOCK_CLOEXEC)) >= 0; close(connection)) {
        std::string all;
        for (ssize_t n; (n = recv(connection, buffer, sizeof buffer, MSG_DONTWAIT)) > 0;) all.append(buffer, n);
        std::istringstream pieces(all);
        for (std::string piece; std::getline(pieces, piece, '\0');) {
            std::smatch m;  // anything else is kept whole, as priority -1
            const bool ok =
                std::regex_match(piece, m, std::regex(R"(<(\d+)>\w{3} [ \d]\d \d\d:\d\d:\d\d ([^:]*): ([\s\S]*))"));
            received.push_back(ok ? SyslogLine{std::stoi(m[1]), m[2], m[3]} : SyslogLine{-1, "", piece});
        }
    }
    return received;
}

}  // namespace zuvtest
