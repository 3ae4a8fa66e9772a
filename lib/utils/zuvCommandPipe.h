#pragma once
// Reading the output of a shell command started by popen(). The stream is held so that
// pclose() runs on every way out, also when storing a line throws.

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

struct zuvPipeCloser {
    void operator()(FILE* stream) const { pclose(stream); }
};
using zuvCommandPipe = std::unique_ptr<FILE, zuvPipeCloser>;

// popen(command, "r"); empty when the shell can't be started (errno tells why).
zuvCommandPipe zuvOpenCommand(const std::string& command);
// Every fgets() piece read with a buffer of bufferSize bytes (2 at the least), line feeds
// kept: a line longer than the buffer arrives in several pieces.
std::vector<std::string> zuvReadPieces(FILE* stream, int bufferSize);
// All the output, read in pieces of bufferSize bytes and joined.
std::string zuvReadJoined(FILE* stream, int bufferSize);
