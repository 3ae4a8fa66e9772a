// Line, record and key/value text helpers of zuvStringUtils.

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "utils/zuvStringUtils.h"

namespace zuvStringUtils {

std::string findValueInLines(const std::vector<std::string>& lines, const std::string& key) {
    for (const std::string& line : lines) {
        const size_t colon = line.find(':');
        if (line.substr(0, colon).find(key) == std::string::npos) continue;
        return trim(colon == std::string::npos ? line : line.substr(colon + 1), whitespaceCharacters);
    }
    return "";
}

std::stringstream printableCharacters(std::istream& in) {
    std::stringstream printable;
    std::for_each(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>(), [&printable](char c) {
        if (isprint(static_cast<unsigned char>(c))) printable.put(c);
    });
    return printable;
}

std::string findLineOrThrow(const std::string& path, const std::string& pattern) {
    std::ifstream in(path);
    if (!in.is_open()) throw std::runtime_error("Unable to open the file : " + path);
    std::string line;
    while (std::getline(in, line)) {
        if (line.find(pattern) != std::string::npos) break;
        line.clear();
    }
    if (line.empty()) throw std::runtime_error("The string pattern : " + pattern + " not found in the file : " + path);
    return line;
}

std::vector<std::string> splitRecords(std::istream& in, int32_t width) {
    std::vector<std::string> pieces;
    const size_t pieceSize = width < 1 ? 1 : static_cast<size_t>(width);
    for (std::string record; std::getline(in, record, '\0');) {
        for (size_t at = 0; at < record.size(); at += pieceSize) pieces.push_back(record.substr(at, pieceSize));
    }
    return pieces;
}

std::map<std::string, std::string> parseKeyValueText(const std::string& text, char delimiter) {
    std::map<std::string, std::string> values;
    std::istringstream stream(text);
    std::string key, value;
    while (std::getline(stream, key, delimiter) && (stream >> std::ws) && std::getline(stream, value)) {
        value.erase(std::remove(value.begin(), value.end(), '"'), value.end());
        values[key] = value;
    }
    return values;
}

}  // namespace zuvStringUtils
