#include "utils/zuvScratchFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

zuvScratchFile::zuvScratchFile(std::string path) : filePath(std::move(path)) {}

zuvScratchFile::~zuvScratchFile() { remove(); }

bool zuvScratchFile::prepare() {
    // unlink() removes a link itself, never its target.
    if (unlink(filePath.c_str()) != 0 && errno != ENOENT) return false;
    const int fd = open(filePath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0) return false;
    close(fd);
    return true;
}

void zuvScratchFile::remove() {
    const int saved = errno;
    unlink(filePath.c_str());
    errno = saved;
}
