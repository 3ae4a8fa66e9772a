#include "platform/zuvPlatformServices.h"

zuvPlatformServices::~zuvPlatformServices() {
    delete smbios;
    delete eventResolver;
}

int32_t zuvPlatformServices::getPlatform() { return smbios->getPlatform(); }

std::string zuvPlatformServices::getFamily() { return smbios->getFamily(); }
