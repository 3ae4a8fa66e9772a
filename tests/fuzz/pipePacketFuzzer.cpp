// libFuzzer harness over zuvReadPipe on a real FIFO: a writer thread sends the input behind its
// first byte in two writes, cut where that byte says. A packet read must be exactly the bytes that
// came, its payload ended by a 0; a whole packet sent in one atomic write must be read.
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "channel/zuvPipeChannel.h"
#include "fuzzHarness.h"

const char* const kPipe = "/run/zuv-fuzz-pipe";

extern "C" void zuvFuzzHarnessSetUp() {
    signal(SIGPIPE, SIG_IGN);  // a reader that stops early leaves the writer with EPIPE
    if (!zuvCreatePipe(kPipe)) abort();
}

// libFuzzer's time-out alarm (SIGALRM, every few seconds) comes without SA_RESTART, so it would
// break the blocking open, read or write of either end; the channel makes no retry and reports
// that as a failed read, as it must. The alarm is made to restart them, as a service's own
// signals are; its handler is in place by the first input.
void restartCallsAfterTheAlarm() {
    struct sigaction action {};
    sigaction(SIGALRM, nullptr, &action);
    action.sa_flags |= SA_RESTART;
    sigaction(SIGALRM, &action, nullptr);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    [[maybe_unused]] static const bool alarmRestarts = (restartCallsAfterTheAlarm(), true);
    uint8_t steer = 0;
    std::string wire;
    if (!splitSteering(data, size, &steer, &wire)) return 0;
    // A packet may announce up to 4 GiB, which the reader allocates before any of it has come;
    // announcements are kept under 16 MiB (the length's top byte is cleared) to keep runs short.
    if (wire.size() > 8) wire[8] = 0;
    const size_t length = wire.size();
    const size_t cut = steer < length ? steer : length;
    std::atomic<bool> readerDone{false};
    std::thread writer([&] {  // never waits for a reader that has gone already
        int fd = -1;
        while ((fd = open(kPipe, O_WRONLY | O_NONBLOCK)) < 0)
            if (readerDone) return;
        fcntl(fd, F_SETFL, 0);
        if (write(fd, wire.data(), cut) < 0 || write(fd, wire.data() + cut, length - cut) < 0) { /* the reader left */
        }
        close(fd);
    });
    zuvPipePacket packet{};
    const bool read = zuvReadPipe(kPipe, &packet);
    readerDone = true;
    writer.join();
    const size_t expected = zuvPipeMetaDataSize + static_cast<size_t>(packet.payloadLength);
    if (read && (length < expected || std::memcmp(&packet, wire.data(), zuvPipeMetaDataSize) != 0 ||
                 std::memcmp(packet.payload, wire.data() + zuvPipeMetaDataSize, packet.payloadLength) != 0 ||
                 packet.payload[packet.payloadLength] != 0))
        abort();
    const bool oneWrite = cut == 0 || cut == length;
    if (!read && oneWrite && length <= PIPE_BUF && length >= zuvPipeMetaDataSize && length >= expected) abort();
    free(packet.payload);
    return 0;
}
