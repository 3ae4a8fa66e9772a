#pragma once
// String, number and expression helpers used across the system.

#include <cstdint>
#include <string>

namespace zuvStringUtils {

// Blank, tab, form feed, vertical tab, line feed, carriage return.
extern const std::string whitespaceCharacters;

// text without the leading and trailing characters that are in `characters`.
std::string trim(const std::string& text, const std::string& characters);

// Each byte as two lower-case hex digits, one blank between bytes.
std::string bytesToHexString(const uint8_t* bytes, uint64_t count);

}  // namespace zuvStringUtils
