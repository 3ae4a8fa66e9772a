// Number and path text helpers of zuvStringUtils.

#include <cctype>
#include <cstdio>

#include "utils/zuvStringUtils.h"
#include "vmware/zuvVMwareOSUtils.h"

namespace zuvStringUtils {

std::string errnoMessage(int errnum) { return zuvVMwareOSUtils().getErrorText(errnum); }

bool isHexString(std::string& text) {
    if (text.empty()) return false;
    bool allDigits = true;
    for (char& c : text) {
        c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
        if (!isxdigit(static_cast<unsigned char>(c))) allDigits = false;
    }
    return allDigits;
}

std::string stripHexPrefix(const std::string& text) {
    if (text.size() >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) return text.substr(2);
    return text;
}

uint32_t parseHexNumber(const std::string& text) {
    std::stringstream stream;
    stream << text;
    uint32_t value = 0;
    stream >> std::hex >> value;
    return value;
}

std::string formatFixed(double value, int precision) {
    char buffer[100];
    // The helper gives at most 99 characters: a longer text is cut, its length not wanted.
    (void)snprintf(buffer, sizeof buffer, "%*.*lf", 0, precision, value);
    return buffer;
}

std::string baseName(const std::string& path) {
    const size_t separator = path.find_last_of("/\\");
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

}  // namespace zuvStringUtils
