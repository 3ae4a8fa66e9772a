#include "zuvBmcExternServer.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

namespace zuvsim {

ExternBmcServer::ExternBmcServer(std::string path, Handler h) : socketPath(std::move(path)), handler(std::move(h)) {
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) throw std::runtime_error("pipe for the BMC server");
    wakeRead = fds[0];
    wakeWrite = fds[1];
}

ExternBmcServer::~ExternBmcServer() {
    stop();
    close(wakeRead);
    close(wakeWrite);
}

void ExternBmcServer::start() {
    worker = std::thread([this] { run(); });
}

void ExternBmcServer::stop() {
    stopping = true;
    const char byte = 1;
    if (write(wakeWrite, &byte, 1) < 0) {
        // The pipe is ours and never full here; nothing else to do.
    }
    if (worker.joinable()) worker.join();
}

int ExternBmcServer::serveDuring(char* const* command) {
    start();
    const pid_t child = fork();
    if (child == 0) {
        execvp(command[0], command);
        _exit(127);
    }
    int status = -1;
    if (child > 0) waitpid(child, &status, 0);
    stop();
    return status;
}

// QEMU creates the socket when it starts; until then, try again.
int ExternBmcServer::connect() {
    while (!stopping) {
        int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (fd < 0) throw std::runtime_error("socket for the BMC server");
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, socketPath.c_str(), sizeof address.sun_path - 1);
        if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) return fd;
        close(fd);
        pollfd wake{wakeRead, POLLIN, 0};
        poll(&wake, 1, 50);
    }
    return -1;
}

void ExternBmcServer::run() {
    const int fd = connect();
    if (fd < 0) return;
    serve(fd);
    close(fd);
}

void ExternBmcServer::serve(int fd) {
    ExternFrameDecoder decoder;
    uint8_t buffer[4096];
    while (!stopping) {
        pollfd fds[2] = {{fd, POLLIN, 0}, {wakeRead, POLLIN, 0}};
        if (poll(fds, 2, -1) < 0) continue;
        if (fds[1].revents) return;
        const ssize_t n = read(fd, buffer, sizeof buffer);
        if (n <= 0) return;  // QEMU went away
        std::vector<ExternFrame> frames;
        decoder.feed(buffer, static_cast<size_t>(n), frames);
        for (const ExternFrame& frame : frames) {
            // QEMU's control commands (protocol version, capabilities) need no answer.
            ExternRequest request;
            if (frame.control || !parseExternRequest(frame, request)) continue;
            const ExternReply reply = handler(request);
            if (reply.action == ExternReply::Action::Silent) continue;
            const std::vector<uint8_t> wire = encodeExternResponse(request, reply.completionCode, reply.body);
            size_t sent = 0;
            while (sent < wire.size()) {
                const ssize_t w = write(fd, wire.data() + sent, wire.size() - sent);
                if (w <= 0) return;
                sent += static_cast<size_t>(w);
            }
        }
    }
}

}  // namespace zuvsim
