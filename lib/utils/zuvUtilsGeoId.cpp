// GeoIDs: finding them in PCI designations, the map by PCI address, decoding into fields.

#include <cstring>

#include "log/zuvLogger.h"
#include "platform/zuvPlatformCode.h"
#include "utils/zuvGeoIdExpressions.h"
#include "utils/zuvUtils.h"
#include "utils/zuvUtilsLogTag.h"

std::map<std::string, std::string> zuvUtils::geoIdLocationMap;
regex_t zuvUtils::geoIdRegex;
std::string zuvUtils::geoIdRegexText;
bool zuvUtils::geoIdRegexReady = false;
std::mutex zuvUtils::geoIdRegexMutex;

namespace {
constexpr size_t kErrorTextSize = 256;
constexpr size_t kDecodeMatchCount = 5;
const char* const kNotAvailable = "NotAvailable";

// The flag is read outside the mutex by every caller. It is set by a sequentially
// consistent store (a full fence) after the compile, and read with acquire, so a thread that
// sees it set also sees the finished expression.
bool readyFlagIsSet() { return __atomic_load_n(&zuvUtils::geoIdRegexReady, __ATOMIC_ACQUIRE); }
void setReadyFlag() { __atomic_store_n(&zuvUtils::geoIdRegexReady, true, __ATOMIC_SEQ_CST); }
}  // namespace

std::string zuvUtils::getGeoIdFromDesignation(const std::string& designation) {
    regex_t compiled;
    char errorText[kErrorTextSize] = {};
    const int compileResult = regcomp(&compiled, zuvGeoIdExpressions::findType2, REG_EXTENDED);
    if (compileResult != 0) {
        regerror(compileResult, &compiled, errorText, sizeof errorText);
        ZUV_LOG_WARNING(kUtilsLogTag, "Error Compiling Regex, Return Value: %d, Error Info: %s", compileResult,
                        errorText);
        return "";
    }
    std::string geoId;
    regmatch_t match[1];
    const int searchResult = regexec(&compiled, designation.c_str(), 1, match, 0);
    if (searchResult != 0) {
        regerror(searchResult, &compiled, errorText, sizeof errorText);
        ZUV_LOG_DEBUG(kUtilsLogTag, "Error detecting GeoId : %s", errorText);
    } else {
        geoId = designation.substr(static_cast<size_t>(match[0].rm_so),
                                   static_cast<size_t>(match[0].rm_eo - match[0].rm_so));
        if (geoId.empty())
            ZUV_LOG_WARNING(kUtilsLogTag, "Issue in identifying GeoId from PCI Designation : : %s",
                            designation.c_str());
    }
    regfree(&compiled);
    return geoId;
}

std::string zuvUtils::getGeoIdForPciAddress(const std::string& pciAddress) {
    if (geoIdLocationMap.empty()) return kNotAvailable;
    const auto found = geoIdLocationMap.find(pciAddress);
    return found == geoIdLocationMap.end() ? kNotAvailable : found->second;
}

std::vector<std::string> zuvUtils::decodeGeoId(const std::string& pciAddress) {
    std::vector<std::string> fields;
    const std::string geoId = getGeoIdForPciAddress(pciAddress);
    if (geoId == kNotAvailable) {
        ZUV_LOG_DEBUG(kUtilsLogTag, "GeoID not available for PCI address [%s].", pciAddress.c_str());
        return fields;
    }
    if (!readyFlagIsSet()) {
        std::lock_guard<std::mutex> lock(geoIdRegexMutex);
        if (!geoIdRegexReady) {
            const int32_t platform = getCachedPlatformCode();
            if (platform == 2) {
                geoIdRegexText = zuvGeoIdExpressions::decodeType2;
            } else if (platform == 1 || platform == 0) {
                geoIdRegexText = zuvGeoIdExpressions::decodeType1;
            } else {
                ZUV_LOG_WARNING(kUtilsLogTag, "Failed to decode GeoID [%s]: Unknown or unsupported platform type.",
                                geoId.c_str());
                return fields;
            }
            const int compileResult = regcomp(&geoIdRegex, geoIdRegexText.c_str(), REG_EXTENDED);
            if (compileResult != 0) {
                char errorText[kErrorTextSize] = {};
                regerror(compileResult, &geoIdRegex, errorText, sizeof errorText);
                ZUV_LOG_WARNING(kUtilsLogTag, "Error compiling regex [%s]: [%d] - [%s]", geoIdRegexText.c_str(),
                                compileResult, errorText);
                return fields;
            }
            setReadyFlag();
        }
    }
    regmatch_t matches[kDecodeMatchCount];
    std::memset(matches, 0, sizeof matches);
    const int searchResult = regexec(&geoIdRegex, geoId.c_str(), kDecodeMatchCount, matches, 0);
    if (searchResult != 0) {
        char errorText[kErrorTextSize] = {};
        regerror(searchResult, &geoIdRegex, errorText, sizeof errorText);
        ZUV_LOG_DEBUG(kUtilsLogTag, "Error decoding GeoID [%s]: [%d] - [%s]", geoId.c_str(), searchResult, errorText);
        return fields;
    }
    for (size_t i = 1; i < kDecodeMatchCount; ++i) {
        if (matches[i].rm_so < 0) break;
        const std::string field = geoId.substr(static_cast<size_t>(matches[i].rm_so),
                                               static_cast<size_t>(matches[i].rm_eo - matches[i].rm_so));
        if (field.empty()) {
            ZUV_LOG_WARNING(kUtilsLogTag, "Failed to extract element # %zu from GeoID [%s]: Internal error (%d, %d)", i,
                            geoId.c_str(), static_cast<int>(matches[i].rm_so), static_cast<int>(matches[i].rm_eo));
            fields.clear();
            return fields;
        }
        fields.push_back(field);
    }
    return fields;
}

void zuvUtils::printGeoIdMap() {
    ZUV_LOG_DEBUG(kUtilsLogTag, "-----Printing GEoID PCIe location map-----");
    for (const auto& entry : geoIdLocationMap)
        ZUV_LOG_DEBUG(kUtilsLogTag, "%s       %s", entry.first.c_str(), entry.second.c_str());
}
