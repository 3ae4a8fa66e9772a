#include "platform/zuvPlatformServiceBuilder.h"

std::unique_ptr<zuvPlatformServices> Builder::takeServices() {
    std::unique_ptr<zuvPlatformServices> finished(new zuvPlatformServices());
    finished.swap(services);
    return finished;
}

void zuvDirectPlatformServiceBuild(Builder& builder) {
    builder.buildSmbios();
    builder.buildInBandComManager();
    builder.buildReserved();
    builder.buildEventResolver();
    builder.buildResourceManagerList();
    builder.buildSDRCache();
}
