#include "utils/zuvShellWord.h"

bool zuvShellQuote(const std::string& value, std::string* word) {
    if (!value.empty() && value[0] == '-') return false;
    for (const char c : value) {
        if (c == '\'' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F) return false;
    }
    *word = "'" + value + "'";
    return true;
}
