#include "zuvServicePipe.h"

#include "channel/zuvPipeChannel.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace zuvsim {

int holdServicePipe(const char* path) {
    struct stat existing {};
    const bool reuse = stat(path, &existing) == 0 && S_ISFIFO(existing.st_mode);
    if (!reuse && !zuvCreatePipe(path)) {
        std::fprintf(stderr, "zuvSimService: cannot create %s\n", path);
        return -1;
    }
    const int fd = open(path, O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) std::perror("zuvSimService: open of the service pipe");
    return fd;
}

long dropUnread(int heldPipe) {
    (void)flock(heldPipe, LOCK_EX);
    char scrap[4096];
    long dropped = 0;
    for (ssize_t n; (n = read(heldPipe, scrap, sizeof scrap)) > 0;) dropped += n;
    (void)flock(heldPipe, LOCK_UN);
    return dropped;
}

}  // namespace zuvsim
