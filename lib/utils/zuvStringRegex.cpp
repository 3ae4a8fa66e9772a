// ECMAScript expression helpers of zuvStringUtils and the PCI address search.

// GCC 12 reports a false "may be used uninitialized" inside std::regex's compiler when the
// sanitizers are on; the expressions compiled here are ordinary.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <algorithm>
#include <cctype>
#include <memory>
#include <mutex>

#include "log/zuvLogger.h"
#include "utils/zuvStringUtils.h"

namespace zuvStringUtils {

std::vector<std::string> regexFindAll(const std::regex& expression, const std::string& text) {
    std::vector<std::string> found;
    std::smatch match;
    auto from = text.cbegin();
    auto flags = std::regex_constants::match_default;
    while (std::regex_search(from, text.cend(), match, expression, flags)) {
        found.push_back(match.size() > 1 && match[1].matched ? match[1].str() : std::string());
        // An empty match would find itself again for ever.
        if (match[0].length() == 0) break;
        from = match[0].second;
        // Word boundaries and look-behinds see the text before the rest that is searched.
        flags = std::regex_constants::match_prev_avail;
    }
    return found;
}

std::vector<std::string> regexCaptures(const std::regex& expression, const std::string& text, uint32_t expectedGroups) {
    std::vector<std::string> groups;
    std::smatch match;
    if (!std::regex_search(text, match, expression) || match.size() - 1 != expectedGroups) return groups;
    for (size_t i = 1; i < match.size(); ++i)
        if (match[i].matched) groups.push_back(match[i].str());
    return groups;
}

bool assignKeyedValue(const std::regex& expression, const std::string& line, FieldTable& fields) {
    std::smatch match;
    if (!std::regex_match(line, match, expression) || match.size() != 3) return false;
    std::string key = match[1].str();
    std::transform(key.begin(), key.end(), key.begin(),
                   [](char c) { return static_cast<char>(tolower(static_cast<unsigned char>(c))); });
    const auto field = fields.find(key);
    if (field == fields.end()) return false;
    *field->second.first = match[2].str();
    *field->second.second = true;
    return true;
}

namespace {
const char* const kPciLogTag = "PCI_UTILS";
const char* const kPciAddressExpression =
    "((?:[a-fA-F0-9]{4}|[a-fA-F0-9]{5}):[a-fA-F0-9]{2}:[a-fA-F0-9]{2}\\.[0-7]{1})";

std::once_flag pciExpressionOnce;
std::regex* pciExpression = nullptr;  // set once, then only read; never freed
}  // namespace

std::vector<std::string> findPciAddresses(const std::string& text) {
    // A throwing compile leaves the flag unset, so the next call compiles again.
    std::call_once(pciExpressionOnce, [] {
        try {
            pciExpression = new std::regex(kPciAddressExpression, std::regex::ECMAScript);
        } catch (const std::regex_error& error) {
            ZUV_LOG_WARNING(kPciLogTag, "Exception caught while compiling regex! (%s)", error.what());
            throw;
        }
    });
    return regexFindAll(*pciExpression, text);
}

}  // namespace zuvStringUtils
