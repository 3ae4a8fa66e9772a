// libFuzzer harness over the SMBIOS reader: any image is opened as the device's, types 1, 9 and 41
// are decoded twice; a text field left without its terminating NUL is a finding.
#include <cstring>

#include "fuzzHarness.h"
#include "platform/zuvSmbiosReader.h"

namespace {

template <size_t... N>
void requireTerminated(const char (&... fields)[N]) {
    if (((strnlen(fields, N) >= N) || ...)) abort();
}

template <typename Record, typename Check>
void walk(int type, Check check) {
    void* table = nullptr;
    unsigned count = 0;
    if (smbiosGetRecords(type, &table, &count) != 0) return;
    for (unsigned i = 0; i < count; ++i) check(static_cast<const Record*>(table)[i]);
    free(table);
}

void decodeAll() {
    walk<smbiosSystemInfo>(1, [](const auto& info) {
        requireTerminated(info.manufacturer, info.productName, info.version, info.serialNumber, info.uuid,
                          info.skuNumber, info.family);
    });
    walk<smbiosSystemSlot>(9, [](const auto& slot) { requireTerminated(slot.designation); });
    walk<smbiosOnboardDevice>(41, [](const auto& device) { requireTerminated(device.referenceDesignation); });
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
