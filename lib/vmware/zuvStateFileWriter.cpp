#include "vmware/zuvStateFileWriter.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>

namespace {

bool writeAll(int fd, const std::string& content) {
    size_t done = 0;
    while (done < content.size()) {
        const ssize_t n = write(fd, content.data() + done, content.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

// Drops the twin and gives errno back as the failure left it.
bool giveUp(const std::string& temporaryPath) {
    const int error = errno;
    unlink(temporaryPath.c_str());
    errno = error;
    return false;
}

}  // namespace

bool zuvReplaceFileContent(const std::string& path, const std::string& temporaryPath, const std::string& content) {
    // A left-over twin holds nothing that the state file doesn't: it is discarded.
    if (unlink(temporaryPath.c_str()) != 0 && errno != ENOENT) return false;
    // Mode 0666 less the umask, as any file that a stream creates.
    const int fd = open(temporaryPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) return false;
    const bool written = writeAll(fd, content) && fsync(fd) == 0;
    if (close(fd) != 0 || !written) return giveUp(temporaryPath);
    if (rename(temporaryPath.c_str(), path.c_str()) != 0) return giveUp(temporaryPath);
    return true;
}

bool zuvEditFileLines(const std::string& path, const std::function<std::string(const std::string&)>& edit,
                      std::string* content) {
    std::ifstream in(path);
    if (!in.is_open()) return false;
    content->clear();
    for (std::string line; std::getline(in, line);) *content += edit(line) + "\n";
    return !in.bad();
}
