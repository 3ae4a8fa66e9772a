// The slots of the V1 builder that fetch the process singletons: the in-band communication
// manager and the SDR repository cache.
#include "delivery/zuvInBandComManager.h"
#include "ipmi/zuvIPMIService.h"
#include "ipmi/zuvSDRRepositoryCache.h"
#include "platform/zuvPlatformServiceBuilder.h"

void zuvPlatformServiceBuilderV1::buildInBandComManager() {
    services->inBandComManager = zuvInBandComManager::getInstance(services->smbios);
}

void zuvPlatformServiceBuilderV1::buildSDRCache() {
    services->sdrCache = zuvIPMI::SDRRepositoryCache::getInstance(zuvIPMIService::getIPMIServiceInstance());
}
