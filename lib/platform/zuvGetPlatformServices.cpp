#include "platform/zuvPlatformServiceBuilder.h"
#include "platform/zuvPlatformServices.h"

std::unique_ptr<zuvPlatformServices> getPlatformServices(int /*version*/) {
    std::unique_ptr<Builder> builder(new zuvPlatformServiceBuilderV1());
    zuvDirectPlatformServiceBuild(*builder);
    return builder->takeServices();
}
