// A program outside the project that uses the installed library: it reads configuration values
// from a file it writes, and passes one packet through a pipe of its own. Run it in a private
// mount namespace whose /opt/kelzuv/vital is its own: it writes the fixed configuration path.
#include "channel/zuvPipeChannel.h"
#include "config/zuvConfig.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <thread>

int main() {
    std::ofstream("/opt/kelzuv/vital/zuv.conf") << R"({"CliMode": "full", "IPMIDBSleepInterval": 7})";
    const zuvConfig& config = zuvConfig::getInstance();
    std::printf("mode %s interval %d\n", config.getCliMode().c_str(), config.getIPMIDBSleepInterval());

    const char* const path = "/opt/kelzuv/consumer.pipe";
    if (!zuvCreatePipe(path)) return 1;
    char text[] = "708";
    const zuvPipePacket sent{9, {}, 0x0102, 3, 0, {}, text};  // tag, type, length, pid, payload
    std::thread writer([&] { zuvWritePipe(path, &sent); });
    zuvPipePacket received{};
    const bool read = zuvReadPipe(path, &received);
    writer.join();
    std::printf("read %d tag %u type 0x%04x payload %s\n", read, received.senderTag, received.messageType,
                read ? received.payload : "");
    std::free(received.payload);
    return 0;
}
