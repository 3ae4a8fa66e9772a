#pragma once
// String, number and expression helpers used across the system.

#include <cstdint>
#include <istream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zuvStringUtils {

// Blank, tab, form feed, vertical tab, line feed, carriage return.
extern const std::string whitespaceCharacters;

// text without the leading and trailing characters that are in `characters`.
std::string trim(const std::string& text, const std::string& characters);

// Each byte as two lower-case hex digits, one blank between bytes.
std::string bytesToHexString(const uint8_t* bytes, uint64_t count);

// strerror_r() text of an error number, through a buffer of 1024 bytes.
std::string errnoMessage(int errnum);

// False for "", else lower-cases text in place and tells whether all of it is hex digits.
bool isHexString(std::string& text);
// text without a leading "0x" or "0X"; the digits keep their case.
std::string stripHexPrefix(const std::string& text);
// The stream's hexadecimal reading: white space skipped, "0x" accepted, 0 without a number,
// the largest value when too large.
uint32_t parseHexNumber(const std::string& text);
// "%*.*lf" with width 0.
std::string formatFixed(double value, int precision);
// What follows the last "/" or "\\"; the whole text without either.
std::string baseName(const std::string& path);

// Trimmed value behind the first ":" of the first line whose part before that ":" holds key;
// a line without ":" gives itself, trimmed. Empty when no line holds key.
std::string findValueInLines(const std::vector<std::string>& lines, const std::string& key);
// The printable characters of the stream (line feeds dropped too).
std::stringstream printableCharacters(std::istream& in);
// First line of the file holding pattern. Throws std::runtime_error when the file can't be
// opened or no line holds it.
std::string findLineOrThrow(const std::string& path, const std::string& pattern);
// NUL-ended records of the stream, empty ones skipped, each cut into pieces of width.
std::vector<std::string> splitRecords(std::istream& in, int32_t width);
// "key<delimiter>value" lines; double quotes removed from the values, the last key wins.
std::map<std::string, std::string> parseKeyValueText(const std::string& text, char delimiter);

// Group 1 of each successive match (the expression must not match the empty string).
std::vector<std::string> regexFindAll(const std::regex& expression, const std::string& text);
// Groups 1.. of the first match (those that took part), or empty unless the match has
// exactly expectedGroups groups.
std::vector<std::string> regexCaptures(const std::regex& expression, const std::string& text, uint32_t expectedGroups);

// Lower-case key -> (target string, found flag), owned by the caller.
using FieldTable = std::unordered_map<std::string, std::pair<std::string*, bool*>>;
// When the whole line matches with exactly two groups and the lower-cased group 1 is in the
// table: group 2 goes to the target, the flag becomes true, and the result is true.
bool assignKeyedValue(const std::regex& expression, const std::string& line, FieldTable& fields);

// PCI addresses (domain of 4 or 5 hex digits, bus, slot, function 0-7) in the order found.
// The expression is compiled once per process; a std::regex_error of that compile is logged
// under "PCI_UTILS" and passes to the caller.
std::vector<std::string> findPciAddresses(const std::string& text);

}  // namespace zuvStringUtils
