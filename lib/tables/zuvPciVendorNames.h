#pragma once
// Names of PCI vendors by vendor id, from the PCI ID list. Built before main in every
// process that links the tables, read-only afterwards. Keys are exactly four lower-case
// hexadecimal digits without "0x": a reader holding "0x1000" or "ABCD" must bring the id to
// that form first. An id that the list doesn't hold has no entry and no fallback name.

#include <cstddef>
#include <map>
#include <string>

struct zuvPciVendorName {
    const char* key;   // "8086"
    const char* name;  // "Intel Corporation"
};

// The generated list, keys ascending, one entry per vendor line of the PCI ID list.
extern const zuvPciVendorName pciVendorNameList[];
extern const std::size_t pciVendorNameCount;
// The "Version:" of the PCI ID list that the generated list was taken from.
extern const char* const pciVendorNamesListVersion;

extern const std::map<std::string, std::string> pciVendorNames;
