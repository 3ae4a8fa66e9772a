#include "zuvSandbox.h"

#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>

namespace zuvtest {
namespace {

bool sandboxed = false;
const char* const kNewRoot = "/tmp/zuv-sandbox-root";  // in a private tmpfs mounted on /tmp first

bool fail(std::string* why, const std::string& what) {
    if (why) *why = what + ": " + std::strerror(errno);
    return false;
}

bool makeDirectory(const std::string& path) { return mkdir(path.c_str(), 0755) == 0 || errno == EEXIST; }

bool mountTmpfs(const std::string& path) {
    return makeDirectory(path) && mount("zuvsandbox", path.c_str(), "tmpfs", 0, "mode=0755") == 0;
}

// Binds the machine's from (a link as what it leads to) at to, or does nothing where from isn't.
bool bindInto(const std::string& from, const std::string& to) {
    struct stat st {};
    if (stat(from.c_str(), &st) != 0) return true;
    const bool made = S_ISDIR(st.st_mode) ? makeDirectory(to) : close(open(to.c_str(), O_CREAT | O_WRONLY, 0644)) == 0;
    return made && mount(from.c_str(), to.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0;
}

// Calls visit with each name in directory but "." and "..", until visit returns false.
bool eachEntry(const std::string& directory, const std::function<bool(const std::string&)>& visit) {
    DIR* dir = opendir(directory.c_str());
    bool ok = dir != nullptr;
    while (dirent* entry = ok ? readdir(dir) : nullptr)
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) ok = visit(entry->d_name);
    if (dir) closedir(dir);
    return ok;
}

bool populate(const std::string& root) {
    // The machine's top entries but the private ones: five empty directories, /dev and /bin. /var with
    // a private /var/log; /var/run is the private /run (a link to it here, else /run is bound over it).
    const std::vector<std::string> privateTops = {"tmp", "opt", "run", "scratch", "vmfs", "dev", "bin"};
    bool ok = eachEntry("/", [&](const std::string& name) {
        return std::count(privateTops.begin(), privateTops.end(), name) || bindInto("/" + name, root + "/" + name);
    });
    for (int i = 0; i < 5; ++i) ok = ok && makeDirectory(root + "/" + privateTops[i]);
    struct stat varRun {};
    ok = ok && mountTmpfs(root + "/var/log") && chmod((root + "/tmp").c_str(), 01777) == 0 &&
         (lstat("/var/run", &varRun) != 0 || S_ISLNK(varRun.st_mode) || bindInto(root + "/run", root + "/var/run"));
    // /bin: links to the machine's programs, so that a test can place a tool at an absolute /bin path.
    ok = ok && makeDirectory(root + "/bin") && eachEntry("/bin", [&](const std::string& name) {
             return symlink(("/usr/bin/" + name).c_str(), (root + "/bin/" + name).c_str()) == 0 || errno == EEXIST;
         });
    // /dev: the usual devices, and room for /dev/log.
    ok = ok && mountTmpfs(root + "/dev");
    for (const char* node : {"null", "zero", "full", "random", "urandom", "tty", "ptmx", "pts", "shm"})
        ok = ok && bindInto(std::string("/dev/") + node, root + "/dev/" + node);
    return ok;
}

}  // namespace

bool enterSandbox(std::string* why) {
    char cwd[4096];
    if (sandboxed) return true;
    if (geteuid() != 0 || !getcwd(cwd, sizeof cwd)) return fail(why, "the sandbox needs root and a working directory");
    if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        !mountTmpfs("/tmp") || !mountTmpfs(kNewRoot) || !populate(kNewRoot) || chroot(kNewRoot) != 0 ||
        (chdir(cwd) != 0 && chdir("/") != 0))
        return fail(why, "a private mount namespace with a tmpfs root");
    return sandboxed = true;
}

void makeDirectories(const std::string& path) {
    for (size_t i = 1; i <= path.size(); ++i)
        if ((i == path.size() || path[i] == '/') && !makeDirectory(path.substr(0, i)))
            throw std::runtime_error("mkdir " + path.substr(0, i) + ": " + std::strerror(errno));
}

void writeFile(const std::string& path, const std::string& text) {
    if (path.rfind('/') != std::string::npos && path.rfind('/') > 0) makeDirectories(path.substr(0, path.rfind('/')));
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
        for (std::string rest; std::getline(pieces, rest, '\0');) {
            const int pri = std::atoi(rest.c_str() + 1);
            rest.erase(0, rest.find('>') + 1);
            if (rest.size() > 16 && rest[3] == ' ' && rest[15] == ' ') rest.erase(0, 16);  // the time stamp
            const size_t colon = std::min(rest.find(": "), rest.size());
            received.push_back(
                {pri & 7, pri & ~7, rest.substr(0, colon), rest.substr(std::min(colon + 2, rest.size()))});
        }
    }
    return received;
}

}  // namespace zuvtest
