#include "utils/zuvCommandPipe.h"

zuvCommandPipe zuvOpenCommand(const std::string& command) { return zuvCommandPipe(popen(command.c_str(), "r")); }

std::vector<std::string> zuvReadPieces(FILE* stream, int bufferSize) {
    const int size = bufferSize > 1 ? bufferSize : 2;
    std::vector<char> buffer(static_cast<size_t>(size));
    std::vector<std::string> pieces;
    while (fgets(buffer.data(), size, stream) != nullptr) pieces.emplace_back(buffer.data());
    return pieces;
}

std::string zuvReadJoined(FILE* stream, int bufferSize) {
    std::string joined;
    for (const std::string& piece : zuvReadPieces(stream, bufferSize)) joined += piece;
    return joined;
}
