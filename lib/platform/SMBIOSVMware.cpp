#include "platform/SMBIOSVMware.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "config/zuvSyslog.h"
#include "platform/zuvSmbiosPlatformCode.h"
#include "platform/zuvSmbiosReader.h"

namespace {

// A fixed text field as a string, never reading past its width.
std::string fieldText(const char* field, size_t width) { return std::string(field, strnlen(field, width)); }

}  // namespace

SMBIOSVMware::SMBIOSVMware() {
    try {
        smbiosOpen();
        unsigned count = 0;
        void* table = nullptr;
        // Named with its class: a constructor runs this class's own version in any case.
        SMBIOSVMware::getSmbiosTable(1, &table, &count);
        systemInfo = static_cast<smbiosSystemInfo*>(table);
    } catch (const smbios_exceptions::invalid_section& e) {
        free(systemInfo);
        systemInfo = nullptr;
        zuvSyslog(LOG_INFO, "Error starting SMBIOS table, Error : %s", e.what());
    }
}

SMBIOSVMware::~SMBIOSVMware() { free(systemInfo); }

std::string SMBIOSVMware::getFamily() {
    if (systemInfo == nullptr) throw smbios_exceptions::not_initialized();
    try {
        return fieldText(systemInfo->family, sizeof systemInfo->family);
    } catch (...) {
        throw std::runtime_error("Couldnot Fetch the family details");
    }
}

std::string SMBIOSVMware::getManufacturer() {
    if (systemInfo == nullptr) throw smbios_exceptions::not_initialized();
    try {
        return fieldText(systemInfo->manufacturer, sizeof systemInfo->manufacturer);
    } catch (...) {
        throw std::runtime_error("Couldnot Fetch the manufacturer details");
    }
}

int32_t SMBIOSVMware::getPlatform() {
    std::string family;
    try {
        family = getFamily();
    } catch (...) {
        throw std::runtime_error("Couldnot Fetch the Platform details");
    }
    return zuvPlatformCodeOfFamily(family);
}

int SMBIOSVMware::getSmbiosTable(int type, void** table, unsigned* count) {
    return smbiosGetRecords(type, table, count);
}
