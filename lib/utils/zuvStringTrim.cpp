#include "utils/zuvStringUtils.h"

namespace zuvStringUtils {

const std::string whitespaceCharacters = " \t\f\v\n\r";

std::string trim(const std::string& text, const std::string& characters) {
    const size_t first = text.find_first_not_of(characters);
    if (first == std::string::npos) return "";
    const size_t last = text.find_last_not_of(characters);
    return text.substr(first, last - first + 1);
}

std::string bytesToHexString(const uint8_t* bytes, uint64_t count) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    if (count == 0) return text;
    text.reserve(count * 3 - 1);
    for (uint64_t i = 0; i < count; ++i) {
        if (i != 0) text += ' ';
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 0x0f];
    }
    return text;
}

}  // namespace zuvStringUtils
