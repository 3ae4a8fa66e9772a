#include "channel/zuvPipeChannel.h"

#include "log/zuvLogger.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#define TAG "ZUV_MSGINFRA"

bool zuvCreatePipe(const char* path) {
    if (mkfifo(path, 0666) == 0) {
        ZUV_LOG_DEBUG(TAG, "Creation of Pipe %s is successfull.", path);
        return true;
    }
    ZUV_LOG_DEBUG(TAG, "Creation of Pipe %s failed.", path);
    return false;
}

bool zuvWritePipe(const char* path, const zuvPipePacket* packet) {
    const int writeFd = open(path, O_WRONLY);
    ZUV_LOG_DEBUG(TAG, "writeFd = %d. pipe = %s", writeFd, path);
    if (writeFd < 0) {
        ZUV_LOG_DEBUG(TAG, "zuvWritePipe: Open of %s failed while writing.", path);
        return false;
    }
    // Senders on one pipe must come one at a time: the lock, held for both writes and released
    // by the close, keeps the two pieces of a packet together when several clients write at
    // once. If it can't be had, the packet goes out unlocked.
    (void)flock(writeFd, LOCK_EX);
    const ssize_t metaWritten = write(writeFd, packet, zuvPipeMetaDataSize);
    if (metaWritten < 0) {
        ZUV_LOG_DEBUG(TAG, "Write packet meta data failed. Reason: %s", strerror(errno));
        close(writeFd);
        return false;
    }
    ZUV_LOG_DEBUG(TAG, "%d packet meta data bytes written on pipe =%s", static_cast<int>(metaWritten), path);
    const ssize_t payloadWritten = write(writeFd, packet->payload, packet->payloadLength);
    const int writeErrno = errno;
    close(writeFd);
    if (payloadWritten < 0) {
        ZUV_LOG_DEBUG(TAG, "Write payload failed. Reason: %s", strerror(writeErrno));
        return false;
    }
    ZUV_LOG_DEBUG(TAG, "%d bytes payload written on pipe =%s", static_cast<int>(payloadWritten), path);
    return true;
}

bool zuvReadPipe(const char* path, zuvPipePacket* packet) {
    const int readFd = open(path, O_RDONLY);
    ZUV_LOG_DEBUG(TAG, "readFd = %d. pipe = %s", readFd, path);
    if (readFd < 0) {
        ZUV_LOG_DEBUG(TAG, "zuvReadPipe:Open of %s failed while reading.", path);
        return false;
    }
    // Read into a scratch record so that a short read never leaves a length that wasn't received.
    zuvPipePacket received{};
    const ssize_t metaRead = read(readFd, &received, zuvPipeMetaDataSize);
    if (metaRead < 0) {
        ZUV_LOG_DEBUG(TAG, "Read packet meta data failed. Reason: %s", strerror(errno));
        close(readFd);
        return false;
    }
    ZUV_LOG_DEBUG(TAG, "Read %d packet meta data bytes from readFd = %d", static_cast<int>(metaRead), readFd);
    if (metaRead != static_cast<ssize_t>(zuvPipeMetaDataSize)) {
        ZUV_LOG_DEBUG(TAG, "Short packet meta data: %d of %d bytes", static_cast<int>(metaRead),
                      static_cast<int>(zuvPipeMetaDataSize));
        close(readFd);
        return false;
    }
    std::memcpy(packet, &received, zuvPipeMetaDataSize);
    packet->payload = static_cast<char*>(calloc(static_cast<size_t>(packet->payloadLength) + 1, 1));
    if (packet->payload == nullptr) {
        ZUV_LOG_DEBUG(TAG, "Failed to allocate memory for payload");
        close(readFd);
        return false;
    }
    const ssize_t payloadRead = read(readFd, packet->payload, packet->payloadLength);
    const int readErrno = errno;
    close(readFd);
    if (payloadRead < 0) {
        ZUV_LOG_DEBUG(TAG, "Read payload failed. Reason: %s", strerror(readErrno));
        return false;
    }
    ZUV_LOG_DEBUG(TAG, "Read %d payload bytes from readFd = %d", static_cast<int>(payloadRead), readFd);
    if (payloadRead != static_cast<ssize_t>(packet->payloadLength)) {
        ZUV_LOG_DEBUG(TAG, "Short payload: %d of %u bytes", static_cast<int>(payloadRead), packet->payloadLength);
        return false;
    }
    return true;
}
