#pragma once
// The platform-specific services of the running host, as the builder assembles them: SMBIOS
// access, the in-band communication manager, the event resolver of the platform, the ids of
// the resource managers that apply, and the SDR cache.
//
// The record owns smbios and eventResolver (destroyed with it, through their virtual
// destructors) and the vector; the manager and the SDR cache are process singletons.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/IELEventResolver.h"
#include "platform/zuvSmbiosInterface.h"

class zuvInBandComManager;  // NOLINT(cppcoreguidelines-virtual-class-destructor): said at the class
namespace zuvIPMI {
class SDRRepositoryCache;
}

class zuvPlatformServices {
public:
    zuvPlatformServices() = default;
    ~zuvPlatformServices();
    zuvPlatformServices(const zuvPlatformServices&) = delete;
    zuvPlatformServices& operator=(const zuvPlatformServices&) = delete;

    zuvSmbiosInterface* getSmbios() const { return smbios; }
    zuvInBandComManager* getInBandComManager() const { return inBandComManager; }
    IELEventResolver* getEventResolver() const { return eventResolver; }
    std::vector<int32_t> getResourceManagers() const { return resourceManagers; }
    zuvIPMI::SDRRepositoryCache* getSDRCache() const { return sdrCache; }

    // Forwarded to smbios, with its failures.
    int32_t getPlatform();
    std::string getFamily();

    // Set by the builder's slots, in this order of fields.
    zuvSmbiosInterface* smbios = nullptr;
    zuvInBandComManager* inBandComManager = nullptr;
    IELEventResolver* eventResolver = nullptr;
    std::vector<int32_t> resourceManagers;
    zuvIPMI::SDRRepositoryCache* sdrCache = nullptr;
};

// Builds the record for the running host; the caller owns it. Callers pass 1: the version
// is not looked at. Throws what the parts throw: std::runtime_error "Couldnot Fetch the
// Platform details" without SMBIOS data, the manager's error when the IPMI device can't be
// opened.
std::unique_ptr<zuvPlatformServices> getPlatformServices(int version);
