#pragma once
// One packet at a time through a named pipe: 17 bytes of meta data as they stand in memory,
// then payloadLength bytes of payload. Each operation opens the pipe, does its work and closes it.

#include <cstddef>
#include <cstdint>

#pragma pack(push, 1)
struct zuvPipePacket {
    uint8_t senderTag;
    uint8_t reserved1[2];
    uint16_t messageType;
    uint32_t payloadLength;
    uint32_t senderPid;
    uint8_t reserved2[4];
    char* payload;  // stays in the process; not sent
};
#pragma pack(pop)

constexpr size_t zuvPipeMetaDataSize = 17;
static_assert(offsetof(zuvPipePacket, messageType) == 3, "packet layout");
static_assert(offsetof(zuvPipePacket, payloadLength) == 5, "packet layout");
static_assert(offsetof(zuvPipePacket, senderPid) == 9, "packet layout");
static_assert(offsetof(zuvPipePacket, payload) == zuvPipeMetaDataSize, "packet layout");
static_assert(sizeof(zuvPipePacket) == 25, "packet layout");

// mkfifo(path, 0666); false when the path exists or can't be made.
bool zuvCreatePipe(const char* path);
// Writes the meta data and the payload of packet; blocks until a reader opens the pipe. Holds an
// exclusive flock on its descriptor for both writes, so concurrent senders never mix packets.
bool zuvWritePipe(const char* path, const zuvPipePacket* packet);
// Reads one packet; packet->payload gets a calloc'ed buffer of payloadLength + 1 bytes (the last
// one 0), which the caller frees, also when a later step fails. A short read is a failure.
bool zuvReadPipe(const char* path, zuvPipePacket* packet);
