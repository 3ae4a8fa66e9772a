#pragma once
// The SMBIOS access of the rest of the system: the host's family and manufacturer, the
// platform code derived from the family, and raw record arrays by structure type.

#include <cstdint>
#include <string>

#include "platform/zuvSmbiosExceptions.h"

class zuvSmbiosInterface {
public:
    virtual ~zuvSmbiosInterface() = default;

    // Family string of the system (type 1). Throws smbios_exceptions::not_initialized when
    // no system record is held, std::runtime_error when the text can't be copied.
    virtual std::string getFamily() = 0;
    // Manufacturer string of the system, with the same failures as getFamily.
    virtual std::string getManufacturer() = 0;
    // Platform code of the family (see zuvSmbiosPlatformCode.h); std::runtime_error
    // "Couldnot Fetch the Platform details" when the family can't be read.
    virtual int32_t getPlatform() = 0;
    // Record array of an SMBIOS structure type (1, 9 or 41): 0 and a table that the caller
    // frees with free(), or -1 with *table null and *count 0.
    virtual int getSmbiosTable(int type, void** table, unsigned* count) = 0;
};
