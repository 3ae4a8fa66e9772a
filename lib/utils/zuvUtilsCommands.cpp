// Running host commands and picking text out of their output.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "log/zuvLogger.h"
#include "utils/zuvCommandPipe.h"
#include "utils/zuvUtils.h"
#include "utils/zuvUtilsLogTag.h"
#include "vmware/zuvHostCalls.h"

namespace {
constexpr int kCommandReadSize = 2048;
constexpr size_t kErrorTextSize = 256;  // regerror() and strerror texts
}  // namespace

std::vector<std::string> zuvUtils::runCommand(const std::string& command) {
    ZUV_LOG_DEBUG(kUtilsLogTag, "The command is %s", command.c_str());
    const zuvCommandPipe stream = zuvOpenCommand(command);
    if (!stream) {
        ZUV_LOG_DEBUG(kUtilsLogTag, "popen() failed! : %s", strerror(errno));
        return {};
    }
    return zuvReadPieces(stream.get(), kCommandReadSize);
}

std::string zuvUtils::findLineInFile(const std::string& path, const std::string& pattern) {
    std::ifstream in(path);
    if (!in.is_open()) {
        ZUV_LOG_DEBUG(kUtilsLogTag, "Unable to open the file : %s, error : %s", path.c_str(), strerror(errno));
        return "";
    }
    std::string line;
    while (std::getline(in, line)) {
        if (line.find(pattern) != std::string::npos) break;
        line.clear();
    }
    if (line.empty())
        ZUV_LOG_DEBUG(kUtilsLogTag, "The string pattern : %s not found in the file : %s", pattern.c_str(),
                      path.c_str());
    return line;
}

bool zuvUtils::regexSearch(const std::string& text, const std::string& pattern, regex_t* compiled, regmatch_t* matches,
                           int matchCount) {
    if (matchCount > 0) std::memset(matches, 0, sizeof(regmatch_t) * static_cast<size_t>(matchCount));
    char errorText[kErrorTextSize] = {};
    const int compileResult = regcomp(compiled, pattern.c_str(), REG_EXTENDED);
    if (compileResult != 0) {
        regerror(compileResult, compiled, errorText, sizeof errorText);
        ZUV_LOG_DEBUG(kUtilsLogTag, "Error Compiling Regex, Return Value: %d, Error Info: %s", compileResult,
                      errorText);
        return false;
    }
    const int searchResult =
        regexec(compiled, text.c_str(), matchCount > 0 ? static_cast<size_t>(matchCount) : 0, matches, 0);
    if (searchResult == 0) {
        ZUV_LOG_DEBUG(kUtilsLogTag, "Regex execution is successful");
        return true;
    }
    regerror(searchResult, compiled, errorText, sizeof errorText);
    ZUV_LOG_DEBUG(kUtilsLogTag, "Error detecting match : %s", errorText);
    return false;
}

std::string zuvUtils::errnoMessage(int errnum) { return zuvErrnoText(errnum, kErrorTextSize); }

void zuvUtils::trimBlanks(std::string& text, std::string& result) {
    result.clear();
    if (text.empty()) return;
    while (text.size() >= 2 && isspace(static_cast<unsigned char>(text.back()))) text.pop_back();
    if (text == " ") return;
    const size_t first = text.find_first_not_of(' ');
    if (first != std::string::npos) result = text.substr(first);
}

std::string zuvUtils::extractBetween(const std::string& startMarker, const std::string& endMarker,
                                     const std::string& text) {
    const size_t start = text.find(startMarker);
    const size_t end = text.find(endMarker);
    if (start == std::string::npos) return text.substr(0, end);
    const size_t from = start + startMarker.size();
    if (end != std::string::npos && end >= from) return text.substr(from, end - from);
    return text.substr(from);
}
