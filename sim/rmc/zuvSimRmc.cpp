#include "zuvSimRmc.h"

#include <algorithm>
#include <stdexcept>

namespace zuvsim {
namespace {

const uint8_t kCompletionOk = 0x00;
const uint8_t kInvalidCommand = 0xC1;
const uint8_t kReservationCancelled = 0xC5;
const uint8_t kRequestLengthInvalid = 0xC7;
const uint8_t kParameterOutOfRange = 0xC9;
const uint8_t kDataNotPresent = 0xCB;

const size_t kBlockSize = 60;
const size_t kNameSize = 20;
const size_t kFirstData = 33;
const size_t kLaterData = 57;

uint16_t le16(const std::vector<uint8_t>& bytes, size_t at) {
    return static_cast<uint16_t>(bytes[at] | bytes[at + 1] << 8);
}

uint32_t le32(const std::vector<uint8_t>& bytes, size_t at) {
    return static_cast<uint32_t>(bytes[at]) | static_cast<uint32_t>(bytes[at + 1]) << 8 |
           static_cast<uint32_t>(bytes[at + 2]) << 16 | static_cast<uint32_t>(bytes[at + 3]) << 24;
}

void putLe16(std::vector<uint8_t>& bytes, uint16_t value) {
    bytes.push_back(static_cast<uint8_t>(value & 0xFF));
    bytes.push_back(static_cast<uint8_t>(value >> 8));
}

bool allZero(const std::vector<uint8_t>& bytes, size_t from, size_t to) {
    return std::all_of(bytes.begin() + static_cast<long>(from), bytes.begin() + static_cast<long>(to),
                       [](uint8_t b) { return b == 0; });
}

Response failure(uint8_t code) {
    Response response;
    response.completionCode = code;
    return response;
}

}  // namespace

std::string AssembledCommand::text() const {
    const auto end = std::find(argument.begin(), argument.end(), 0);
    return std::string(argument.begin(), end);
}

SimulatedRmc::SimulatedRmc()
    : deviceId{0x20, 0x01, 0x02, 0x13, 0x02, 0xBF, 0x57, 0x01, 0x00, 0x34, 0x12, 0x00, 0x00, 0x00, 0x00} {}

Response SimulatedRmc::handle(uint8_t netFn, uint8_t cmd, const std::vector<uint8_t>& data) {
    std::lock_guard<std::mutex> lock(mutex);
    received.push_back(Request{netFn, cmd, data});

    auto queued = oneShot.find(Key{netFn, cmd});
    if (queued != oneShot.end() && !queued->second.empty()) {
        const std::pair<bool, Response> next = queued->second.front();
        queued->second.pop_front();
        if (next.first) return next.second;
    }

    if (netFn == kRmcNetFn && cmd == kBlockCommand) return blockCommand(data);
    if (netFn == kRmcNetFn && (cmd == 0x81 || cmd == 0x82 || cmd == 0x83)) {
        Response response;
        auto bell = doorBells.find(cmd);
        if (bell != doorBells.end()) response.body = bell->second;
        return response;
    }
    if (netFn == kAppNetFn && cmd == 0x01) {
        Response response;
        response.body = deviceId;
        return response;
    }
    if (netFn == kStorageNetFn && cmd == 0x20) return repositoryInfo();
    if (netFn == kStorageNetFn && cmd == 0x22) return reserve();
    if (netFn == kStorageNetFn && cmd == 0x23) return getSdr(data);
    return failure(kInvalidCommand);
}

std::pair<uint8_t, uint8_t> SimulatedRmc::blockReply(uint8_t natural) {
    if (blockReplies.empty()) return {natural, 0};
    const std::pair<uint8_t, uint8_t> scripted = blockReplies.front();
    blockReplies.pop_front();
    return scripted;
}

// Reassembles one block. The reply's index changes with every block, so that a host which
// doesn't echo the previous reply's index is caught.
Response SimulatedRmc::blockCommand(const std::vector<uint8_t>& data) {
    if (data.size() != kBlockSize) {
        AssembledCommand stray;
        stray.faults.push_back("block of " + std::to_string(data.size()) + " bytes");
        assembled.push_back(stray);
        commandOpen = false;
        return failure(kRequestLengthInvalid);
    }
    const uint16_t index = le16(data, 0);
    const uint8_t commandLength = data[2];
    uint8_t natural = 1;
    AssembledCommand* command = nullptr;
    size_t dataStart = 0;
    size_t dataSize = 0;

    if (commandLength == kNameSize) {
        if (commandOpen) assembled.back().faults.push_back("a new command began before the last block");
        assembled.push_back(AssembledCommand{});
        command = &assembled.back();
        if (index != 0) command->faults.push_back("first block carries index " + std::to_string(index));
        const auto nameBegin = data.begin() + 3;
        const auto nameEnd = nameBegin + kNameSize;
        const auto nul = std::find(nameBegin, nameEnd, 0);
        if (nul == nameEnd)
            command->faults.push_back("command name without NUL");
        else if (!allZero(data, static_cast<size_t>(nul - data.begin()), 3 + kNameSize))
            command->faults.push_back("command name not zero-filled");
        command->name.assign(nameBegin, nul);
        command->argumentLength = le32(data, 23);
        if (command->argumentLength == 0) command->faults.push_back("argument length 0");
        dataStart = 27;
        dataSize = kFirstData;
        commandOpen = true;
    } else if (commandLength == 0) {
        if (!commandOpen) {
            assembled.push_back(AssembledCommand{});
            assembled.back().faults.push_back("block without a first block");
            natural = 3;
        } else {
            command = &assembled.back();
            if (index != lastReplyIndex) {
                command->faults.push_back("block " + std::to_string(command->blocks + 1) + " carries index " +
                                          std::to_string(index) + ", expected " + std::to_string(lastReplyIndex));
                natural = 3;
            }
            dataStart = 3;
            dataSize = kLaterData;
        }
    } else {
        if (commandOpen) assembled.back().faults.push_back("command length " + std::to_string(commandLength));
        commandOpen = false;
        natural = 8;
    }

    if (command != nullptr) {
        command->blocks++;
        const size_t due = command->argumentLength - command->argument.size();
        const size_t take = std::min(due, dataSize);
        command->argument.insert(command->argument.end(), data.begin() + static_cast<long>(dataStart),
                                 data.begin() + static_cast<long>(dataStart + take));
        if (!allZero(data, dataStart + take, dataStart + dataSize))
            command->faults.push_back("block " + std::to_string(command->blocks) + " not zero-filled");
        if (command->argument.size() == command->argumentLength) {
            command->complete = true;
            commandOpen = false;
            if (command->argumentLength != 0 && command->argument.back() != 0)
                command->faults.push_back("argument without terminating NUL");
            if (natural == 1) natural = 0;
        }
    }

    lastReplyIndex = nextCommandIndex++;
    Response response;
    const std::pair<uint8_t, uint8_t> reply = blockReply(natural);
    response.body.push_back(reply.first);
    putLe16(response.body, lastReplyIndex);
    response.body.push_back(reply.second);
    return response;
}

Response SimulatedRmc::repositoryInfo() const {
    Response response;
    const uint16_t count =
        recordCountOverride >= 0 ? static_cast<uint16_t>(recordCountOverride) : static_cast<uint16_t>(sdrs.size());
    response.body.push_back(0x51);  // SDR version 1.5
    putLe16(response.body, count);
    putLe16(response.body, 0x1000);                          // free space
    for (int i = 0; i < 8; ++i) response.body.push_back(0);  // addition and erase time stamps
    response.body.push_back(0x02);                           // Reserve SDR Repository supported
    return response;
}

Response SimulatedRmc::reserve() {
    if (++reservationId == 0) reservationId = 1;
    reservationValid = true;
    Response response;
    putLe16(response.body, reservationId);
    return response;
}

uint16_t SimulatedRmc::sdrId(size_t index) const { return static_cast<uint16_t>(0x0010 + 7 * index); }

Response SimulatedRmc::getSdr(const std::vector<uint8_t>& data) {
    if (data.size() != 6) return failure(kRequestLengthInvalid);
    const uint16_t reservation = le16(data, 0);
    const uint16_t recordId = le16(data, 2);
    const uint8_t offset = data[4];
    const uint8_t count = data[5];
    if (!reservationValid || reservation != reservationId) return failure(kReservationCancelled);

    size_t index = 0;
    if (recordId != 0) {
        while (index < sdrs.size() && sdrId(index) != recordId) ++index;
    }
    if (index >= sdrs.size()) return failure(kDataNotPresent);

    const std::vector<uint8_t>& record = sdrs[index];
    if (offset > record.size()) return failure(kParameterOutOfRange);
    const size_t end = std::min(record.size(), static_cast<size_t>(offset) + count);
    Response response;
    putLe16(response.body, index + 1 < sdrs.size() ? sdrId(index + 1) : kEndOfRepository);
    response.body.insert(response.body.end(), record.begin() + offset, record.begin() + static_cast<long>(end));
    return response;
}

void SimulatedRmc::scriptBlockReplies(std::vector<std::pair<uint8_t, uint8_t>> replies) {
    std::lock_guard<std::mutex> lock(mutex);
    blockReplies.clear();
    for (const auto& reply : replies) blockReplies.emplace_back(reply.first, reply.second);
}

std::vector<AssembledCommand> SimulatedRmc::commands() const {
    std::lock_guard<std::mutex> lock(mutex);
    return assembled;
}

void SimulatedRmc::setDoorBell(uint8_t cmd, std::vector<uint8_t> body) {
    std::lock_guard<std::mutex> lock(mutex);
    doorBells[cmd] = std::move(body);
}

uint16_t SimulatedRmc::addSdr(uint8_t type, const std::vector<uint8_t>& body) {
    if (body.size() > 255) throw std::invalid_argument("an SDR body holds at most 255 bytes");
    std::vector<uint8_t> bytes{0, 0, 0x51, type, static_cast<uint8_t>(body.size())};
    bytes.insert(bytes.end(), body.begin(), body.end());
    std::lock_guard<std::mutex> lock(mutex);
    const uint16_t id = sdrId(sdrs.size());
    sdrs.push_back(bytes);
    sdrs.back()[0] = static_cast<uint8_t>(id & 0xFF);
    sdrs.back()[1] = static_cast<uint8_t>(id >> 8);
    return id;
}

std::vector<uint8_t> SimulatedRmc::sdrRecord(size_t index) const {
    std::lock_guard<std::mutex> lock(mutex);
    return sdrs.at(index);
}

void SimulatedRmc::overrideRecordCount(uint16_t count) {
    std::lock_guard<std::mutex> lock(mutex);
    recordCountOverride = count;
}

void SimulatedRmc::pushResponse(uint8_t netFn, uint8_t cmd, Response response) {
    std::lock_guard<std::mutex> lock(mutex);
    oneShot[Key{netFn, cmd}].emplace_back(true, std::move(response));
}

void SimulatedRmc::pushLogicAnswer(uint8_t netFn, uint8_t cmd) {
    std::lock_guard<std::mutex> lock(mutex);
    oneShot[Key{netFn, cmd}].emplace_back(false, Response{});
}

std::vector<Request> SimulatedRmc::requests() const {
    std::lock_guard<std::mutex> lock(mutex);
    return received;
}

size_t SimulatedRmc::countOf(uint8_t netFn, uint8_t cmd) const {
    std::lock_guard<std::mutex> lock(mutex);
    return static_cast<size_t>(std::count_if(received.begin(), received.end(), [&](const Request& request) {
        return request.netFn == netFn && request.cmd == cmd;
    }));
}

void SimulatedRmc::clearRecord() {
    std::lock_guard<std::mutex> lock(mutex);
    received.clear();
    assembled.clear();
    commandOpen = false;  // a command in progress has no record left to complete
}

}  // namespace zuvsim
