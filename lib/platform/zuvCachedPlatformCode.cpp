#include <memory>

#include "platform/SMBIOSVMware.h"
#include "platform/zuvPlatformCode.h"
#include "platform/zuvPlatformCodeStore.h"
#include "platform/zuvSmbiosPlatformCode.h"

int32_t getCachedPlatformCode() {
    int32_t code = zuvCachedPlatformCodeValue.load(std::memory_order_relaxed);
    if (code != zuvPlatformCodeUnknown) return code;
    std::unique_ptr<zuvSmbiosInterface> smbios(new SMBIOSVMware());
    code = smbios->getPlatform();
    zuvCachedPlatformCodeValue.store(code, std::memory_order_relaxed);
    return code;
}
