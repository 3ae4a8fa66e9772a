// The slots of the V1 builder that depend only on the host itself.
#include "log/zuvLogger.h"
#include "platform/SMBIOSVMware.h"
#include "platform/zuvPlatformServiceBuilder.h"
#include "platform/zuvResourceManagerList.h"
#include "vmware/zuvVMwareOSUtils.h"

namespace {

constexpr const char* kBuilderLogTag = "ZUV_PLATFORM_SERVICE_BUILDER";
constexpr int32_t kSphPlatformCode = 4;

}  // namespace

void zuvPlatformServiceBuilderV1::buildSmbios() {
    zuvSmbiosInterface* smbios = new SMBIOSVMware();
    delete services->smbios;
    services->smbios = smbios;
}

void zuvPlatformServiceBuilderV1::buildReserved() {}

void zuvPlatformServiceBuilderV1::buildEventResolver() {
    IELEventResolver* resolver = nullptr;
    if (services->smbios->getPlatform() == kSphPlatformCode) {
        resolver = new IELEventMap::IELEventSPH(IELEventMap::sphEventTable());
    } else {
        resolver = new IELEventMap::IELEventPreSPH(IELEventMap::preSPHEventTable());
    }
    delete services->eventResolver;
    services->eventResolver = resolver;
}

void zuvPlatformServiceBuilderV1::buildResourceManagerList() {
    ZUV_LOG_DEBUG(kBuilderLogTag, "Building the Resource Manager List applicable to the Environment");
    const std::string kernelLine = zuvVMwareOSUtils().getKernelInfo();
    ZUV_LOG_DEBUG(kBuilderLogTag, "Target OS [%s]", kernelLine.c_str());
    services->resourceManagers = zuvResourceManagersForKernel(kernelLine);
}
