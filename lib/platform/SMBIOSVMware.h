#pragma once
// SMBIOS access on a VMware ESXi host: the system record read once, at construction, from
// the host's SMBIOS character device through the reader module.

#include "platform/zuvSmbiosInterface.h"
#include "platform/zuvSmbiosRecords.h"

class SMBIOSVMware : public zuvSmbiosInterface {
public:
    // Opens the table and takes the type 1 records; never fails. Without them the object
    // exists but getFamily and getManufacturer throw smbios_exceptions::not_initialized.
    SMBIOSVMware();
    ~SMBIOSVMware() override;
    SMBIOSVMware(const SMBIOSVMware&) = delete;
    SMBIOSVMware& operator=(const SMBIOSVMware&) = delete;

    std::string getFamily() override;
    std::string getManufacturer() override;
    int32_t getPlatform() override;
    int getSmbiosTable(int type, void** table, unsigned* count) override;

private:
    smbiosSystemInfo* systemInfo = nullptr;  // owned, freed with free()
};
