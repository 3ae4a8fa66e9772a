// libFuzzer harness over the SMBIOS reader: any image is opened as if the device held it,
// and every record type is decoded. Sanitizers catch reads or writes outside the buffer;
// the checks below catch text fields left without their terminating NUL.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "platform/zuvSmbiosReader.h"

namespace {

template <size_t N>
void requireTerminated(const char (&field)[N]) {
    if (strnlen(field, N) >= N) abort();
}

void decodeAll() {
    void* table = nullptr;
    unsigned count = 0;
    if (smbiosGetRecords(1, &table, &count) == 0) {
        auto* info = static_cast<smbiosSystemInfo*>(table);
        for (unsigned i = 0; i < count; ++i) {
            requireTerminated(info[i].manufacturer), requireTerminated(info[i].productName);
            requireTerminated(info[i].version), requireTerminated(info[i].serialNumber);
            requireTerminated(info[i].uuid), requireTerminated(info[i].skuNumber), requireTerminated(info[i].family);
        }
        free(table);
    }
    if (smbiosGetRecords(9, &table, &count) == 0) {
        auto* slots = static_cast<smbiosSystemSlot*>(table);
        for (unsigned i = 0; i < count; ++i) requireTerminated(slots[i].designation);
        free(table);
    }
    if (smbiosGetRecords(41, &table, &count) == 0) {
        auto* devices = static_cast<smbiosOnboardDevice*>(table);
        for (unsigned i = 0; i < count; ++i) requireTerminated(devices[i].referenceDesignation);
        free(table);
    }
    if (table == nullptr && count != 0) abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    smbiosClose();
    if (smbiosOpenImage(data, size) == 0) {
        decodeAll();
        decodeAll();  // a second walk sees the strings the first one cleaned in place
    }
    smbiosClose();
    return 0;
}
