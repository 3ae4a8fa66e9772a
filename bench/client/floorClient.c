/* The least client that does zuvCli's exchange for "zuvCli -t <id>": make the reply pipe, write
 * one packet (17 bytes of meta data, then the payload) to the service's pipe, read one reply,
 * print its line, remove the pipe. Nothing else: no configuration, no log, no tables. Built as C
 * and, from this same source, as C++ linked with jsoncpp, it is the floor that zuvCli's start
 * cost is measured against. Valid C and C++ alike. */
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

enum { metaDataSize = 17, maxPayload = 256 };

static int readFully(int fd, unsigned char* into, size_t length) {
    size_t done = 0;
    while (done < length) {
        const ssize_t got = read(fd, into + done, length - done);
        if (got <= 0) return 0;
        done += (size_t)got;
    }
    return 1;
}

int main(int argc, char** argv) {
    const char* payload = argc > 1 ? argv[1] : "708";
    const uint32_t payloadLength = (uint32_t)strlen(payload);
    const uint16_t messageType = 0x0102;
    const uint32_t pid = (uint32_t)getpid();
    unsigned char packet[metaDataSize + maxPayload];
    char replyPipe[64];
    int32_t code = -1;
    int fd;
    if (payloadLength > maxPayload) return 1;
    snprintf(replyPipe, sizeof replyPipe, "/var/run/kelzuvcli%u", (unsigned)pid);
    if (mkfifo(replyPipe, 0666) != 0) return 1;

    memset(packet, 0, metaDataSize);
    packet[0] = 9; /* sender tag of the client */
    memcpy(packet + 3, &messageType, sizeof messageType);
    memcpy(packet + 5, &payloadLength, sizeof payloadLength);
    memcpy(packet + 9, &pid, sizeof pid);
    memcpy(packet + metaDataSize, payload, payloadLength);
    fd = open("/var/run/kelzuv", O_WRONLY);
    if (fd < 0 || write(fd, packet, metaDataSize + payloadLength) != (ssize_t)(metaDataSize + payloadLength)) {
        unlink(replyPipe);
        return 1;
    }
    close(fd);

    fd = open(replyPipe, O_RDONLY);
    if (fd >= 0 && readFully(fd, packet, metaDataSize)) {
        uint32_t replyLength = 0;
        memcpy(&replyLength, packet + 5, sizeof replyLength);
        if (replyLength >= sizeof code && replyLength <= maxPayload && readFully(fd, packet, replyLength))
            memcpy(&code, packet, sizeof code);
    }
    if (fd >= 0) close(fd);
    unlink(replyPipe);
    fputs(code == 0 ? "ZUVCli: Test Event sent to RMC. Please check logs for details.\n"
                    : "ZUVCli: Test Event couldn't be sent to RMC. Please check logs for details.\n",
          stdout);
    return 0;
}
