#pragma once
// A simulated RMC: the management processor's side of the in-band IPMI traffic, independent of
// how the bytes reach it (the device seam in unit tests, a socket behind QEMU in kernel tests).
// It reassembles the block commands of network function 0x3A command 0x80, answers the
// doorbells, Get Device ID and an SDR repository with reservations, and records everything it
// was asked, byte for byte. Tests script its answers.

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace zuvsim {

struct Response {
    uint8_t completionCode = 0;
    std::vector<uint8_t> body;
    bool noData = false;  // not even a completion code comes back
};

struct Request {
    uint8_t netFn = 0;
    uint8_t cmd = 0;
    std::vector<uint8_t> data;
};

// A named command as the RMC put it together from its blocks.
struct AssembledCommand {
    std::string name;
    std::vector<uint8_t> argument;  // all announced bytes, the terminating NUL included
    uint32_t argumentLength = 0;    // as announced in the first block
    size_t blocks = 0;
    bool complete = false;            // all announced bytes arrived
    std::vector<std::string> faults;  // what was wrong with the blocks; empty when all was right
    // The argument up to its terminating NUL.
    std::string text() const;
};

class SimulatedRmc {
public:
    static constexpr uint8_t kRmcNetFn = 0x3A;
    static constexpr uint8_t kBlockCommand = 0x80;
    static constexpr uint8_t kAppNetFn = 0x06;
    static constexpr uint8_t kStorageNetFn = 0x0A;
    static constexpr uint16_t kEndOfRepository = 0xFFFF;

    SimulatedRmc();

    // The RMC's answer to one request. Every request is recorded first.
    Response handle(uint8_t netFn, uint8_t cmd, const std::vector<uint8_t>& data);

    // --- block commands ---
    // Transfer and exit statuses of the replies to the coming blocks, in the order they arrive
    // (over all commands). A block beyond the script gets the natural status (1 while argument
    // bytes are still due, 0 on the last block, 3 when its index is wrong) and exit status 0.
    void scriptBlockReplies(std::vector<std::pair<uint8_t, uint8_t>> replies);
    std::vector<AssembledCommand> commands() const;

    // --- doorbells (0x81, 0x82, 0x83), answered with this body until changed ---
    void setDoorBell(uint8_t cmd, std::vector<uint8_t> body);

    // --- SDR repository ---
    // Adds a record with this type and body; returns its record id. Ids are not consecutive, so
    // a reader must follow the next-record ids. The length byte is the body's size, up to 255:
    // a body above 250 bytes makes a record longer than the 255 bytes of the host's copy.
    uint16_t addSdr(uint8_t type, const std::vector<uint8_t>& body);
    std::vector<uint8_t> sdrRecord(size_t index) const;
    // Reports this record count in Get SDR Repository Info instead of the real one.
    void overrideRecordCount(uint16_t count);

    // --- scripting: wins over the logic above ---
    // Answers the next request of (netFn, cmd) with this response, once per call.
    void pushResponse(uint8_t netFn, uint8_t cmd, Response response);
    // Lets the next request of (netFn, cmd) through to the logic: with pushResponse, a
    // script such as "the second reservation fails".
    void pushLogicAnswer(uint8_t netFn, uint8_t cmd);

    // --- what was received ---
    std::vector<Request> requests() const;
    size_t countOf(uint8_t netFn, uint8_t cmd) const;
    void clearRecord();

private:
    using Key = std::pair<uint8_t, uint8_t>;

    Response blockCommand(const std::vector<uint8_t>& data);
    Response repositoryInfo() const;
    Response reserve();
    Response getSdr(const std::vector<uint8_t>& data);
    uint16_t sdrId(size_t index) const;
    std::pair<uint8_t, uint8_t> blockReply(uint8_t natural);

    mutable std::mutex mutex;
    std::vector<Request> received;

    std::vector<AssembledCommand> assembled;
    bool commandOpen = false;  // a command whose bytes are still due
    std::deque<std::pair<uint8_t, uint8_t>> blockReplies;
    uint16_t lastReplyIndex = 0;
    uint16_t nextCommandIndex = 0x0100;

    std::map<uint8_t, std::vector<uint8_t>> doorBells;
    std::vector<uint8_t> deviceId;

    std::vector<std::vector<uint8_t>> sdrs;
    int recordCountOverride = -1;
    uint16_t reservationId = 0;
    bool reservationValid = false;

    std::map<Key, std::deque<std::pair<bool, Response>>> oneShot;  // false: the logic answers
};

}  // namespace zuvsim
