#pragma once
// Assembles a zuvPlatformServices record slot by slot. The director runs the slots in a
// fixed order; buildSmbios comes first because the manager and the event resolver read it.

#include <memory>

#include "platform/zuvPlatformServices.h"

class Builder {
public:
    Builder() : services(new zuvPlatformServices()) {}
    virtual ~Builder() = default;
    Builder(const Builder&) = delete;
    Builder& operator=(const Builder&) = delete;

    virtual void buildInBandComManager() = 0;
    virtual void buildSmbios() = 0;
    virtual void buildReserved() = 0;
    virtual void buildEventResolver() = 0;
    virtual void buildResourceManagerList() = 0;
    virtual void buildSDRCache() = 0;

    // The finished record; the builder goes on with a fresh empty one.
    std::unique_ptr<zuvPlatformServices> takeServices();

protected:
    std::unique_ptr<zuvPlatformServices> services;  // the record under construction
};

// The builder of this system's hosts: SMBIOS through SMBIOSVMware, the event resolver by
// platform code, the resource managers by kernel line.
class zuvPlatformServiceBuilderV1 : public Builder {
public:
    void buildInBandComManager() override;
    void buildSmbios() override;
    void buildReserved() override;
    void buildEventResolver() override;
    void buildResourceManagerList() override;
    void buildSDRCache() override;
};

// Runs the slots in their order: smbios, manager, reserved, resolver, resource managers, SDR cache.
void zuvDirectPlatformServiceBuild(Builder& builder);
