// PCI vendor, device and subsystem ids of a device, cut out of the hardware listing: the
// listing holds one block per device, separated by empty lines, with "Name: value" fields.
#include <regex.h>

#include "log/zuvLogger.h"
#include "utils/zuvShellWord.h"
#include "utils/zuvStringUtils.h"
#include "vmware/zuvVMwareLogTag.h"
#include "vmware/zuvVMwareOSUtils.h"

namespace {

// The key becomes an awk pattern between slashes. It stays a regular expression, but it can't
// end the pattern: every slash is escaped for awk (escape pairs are kept as they are), and a
// key ending in a lone backslash is refused (false). The shell word around the awk program
// is made by zuvShellQuote, which refuses quotes and control characters.
bool awkPatternOfKey(const std::string& key, std::string* pattern) {
    pattern->clear();
    for (size_t i = 0; i < key.size(); ++i) {
        if (key[i] == '\\') {
            if (i + 1 == key.size()) return false;
            *pattern += key.substr(i++, 2);
        } else {
            *pattern += key[i] == '/' ? std::string("\\/") : std::string(1, key[i]);
        }
    }
    return true;
}

struct PciFieldNames {
    const char* grepWords;
    const char* vendorExpression;
    const char* deviceExpression;
    const char* vendorMissing;
    const char* deviceMissing;
    const char* result;
};

constexpr PciFieldNames kIds = {"Vendor ID:\\|Device ID:",         ",Vendor ID: 0x[A-Za-z0-9]{4}",
                                ",Device ID: 0x[A-Za-z0-9]{4}",    "Cound not fetch vendorId for %s",
                                "Cound not fetch deviceId for %s", "vendorId = %s, deviceId = %s"};
constexpr PciFieldNames kSubIds = {"SubVendor ID:\\|SubDevice ID:",      ",SubVendor ID: 0x[A-Za-z0-9]{4}",
                                   ",SubDevice ID: 0x[A-Za-z0-9]{4}",    "Cound not fetch subVendorId for %s",
                                   "Cound not fetch subDeviceId for %s", "subVendorId = %s, subDeviceId = %s"};

std::pair<std::string, std::string> lookUp(zuvVMwareOSUtils& os, const std::string& key, const PciFieldNames& names) {
    std::string pattern, program;
    if (!awkPatternOfKey(key, &pattern) || !zuvShellQuote("/" + pattern + "/,/^$/", &program)) {
        ZUV_LOG_WARNING(kVMwareLogTag, "Refusing PCI look-up key with a quote or control character: [%s]", key.c_str());
        return {"", ""};
    }
    const std::string command =
        "cat " + os.getInstallPath() + "/tmp/zuv_hwlist.txt | awk " + program + " | grep -w '" + names.grepWords + "'";
    const std::string fields = os.joinFieldLines(os.runCommand(command));
    const std::string vendor = os.extractFieldValue(fields, names.vendorExpression);
    const std::string device = os.extractFieldValue(fields, names.deviceExpression);
    if (vendor.empty()) ZUV_LOG_DEBUG(kVMwareLogTag, names.vendorMissing, key.c_str());
    if (device.empty()) ZUV_LOG_DEBUG(kVMwareLogTag, names.deviceMissing, key.c_str());
    ZUV_LOG_DEBUG(kVMwareLogTag, names.result, vendor.c_str(), device.c_str());
    return {device, vendor};
}

}  // namespace

std::pair<std::string, std::string> zuvVMwareOSUtils::getPciIds(const std::string& key) {
    return lookUp(*this, key, kIds);
}

std::pair<std::string, std::string> zuvVMwareOSUtils::getPciSubIds(const std::string& key) {
    return lookUp(*this, key, kSubIds);
}

std::string zuvVMwareOSUtils::joinFieldLines(const std::vector<std::string>& lines) {
    using zuvStringUtils::trim;
    using zuvStringUtils::whitespaceCharacters;
    std::string joined;
    for (const std::string& raw : lines) {
        const std::string line = trim(raw, whitespaceCharacters);
        const size_t colon = line.find(':');
        const size_t cut = colon == std::string::npos ? 0 : colon + 1;
        joined += " ," + line.substr(0, cut) + " " + trim(line.substr(cut), whitespaceCharacters);
    }
    return joined;
}

std::string zuvVMwareOSUtils::extractFieldValue(const std::string& text, const std::string& expression) {
    regex_t compiled;
    int rc = regcomp(&compiled, expression.c_str(), REG_EXTENDED);
    if (rc != 0) {
        char error[256] = {};
        regerror(rc, &compiled, error, sizeof error);
        ZUV_LOG_WARNING(kVMwareLogTag, "Error Compiling Regex, Return Value: %d, Error Info: %s", rc, error);
        return "";
    }
    regmatch_t match[1];
    rc = regexec(&compiled, text.c_str(), 1, match, 0);
    std::string value;
    if (rc != 0) {
        char error[256] = {};
        regerror(rc, &compiled, error, sizeof error);
        ZUV_LOG_DEBUG(kVMwareLogTag, "Error detecting valueType : %s", error);
    } else {
        const std::string matched = text.substr(match[0].rm_so, match[0].rm_eo - match[0].rm_so);
        const size_t colon = matched.find(':');
        // The value stands behind ": "; a match without a colon names no value.
        if (!matched.empty() && colon != std::string::npos && colon + 2 <= matched.size())
            value = matched.substr(colon + 2);
        if (value.empty())
            ZUV_LOG_WARNING(kVMwareLogTag, "Issue in identifying details from localcli output : %s", text.c_str());
    }
    regfree(&compiled);
    return value;
}
