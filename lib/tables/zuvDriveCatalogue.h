#pragma once
// The drive catalogue: a drive's model numbers (the server maker's and the drive
// manufacturer's) tied to the maker's spare part and option numbers. Fixed-width records in
// initialised data: no construction at start, no relocation.
//
// Each field holds a NUL-terminated text, zero-filled to its end; an empty field is all
// zeros, so a field of 41 bytes holds at most 40 characters and one of 33 at most 32.
// Positions 1 to 4 run in parallel: sparePartNumberN is filled exactly where optionNumberN is.

#include <array>
#include <cstddef>

struct zuvDriveCatalogueEntry {
    char modelNumber[41];        // the server maker's model number
    char vendorModelNumber[41];  // the drive manufacturer's own model number
    char sparePartNumber1[33];
    char sparePartNumber2[33];
    char sparePartNumber3[33];
    char sparePartNumber4[33];
    char optionNumber1[33];
    char optionNumber2[33];
    char optionNumber3[33];
    char optionNumber4[33];
};

// The maker's product list is not part of this source tree, so the committed table holds
// no rows. The table has no header and no terminating record: its count is its size.
constexpr std::size_t zuvDriveCatalogueRowCount = 0;
extern const std::array<zuvDriveCatalogueEntry, zuvDriveCatalogueRowCount> zuvDriveCatalogue;

// The first row whose modelNumber or vendorModelNumber is exactly `number`, or nullptr.
// An empty or null number matches nothing: empty fields never select a row.
const zuvDriveCatalogueEntry* findDriveCatalogueEntry(const char* number, const zuvDriveCatalogueEntry* rows,
                                                      std::size_t rowCount);
// The same over zuvDriveCatalogue.
const zuvDriveCatalogueEntry* findDriveCatalogueEntry(const char* number);
