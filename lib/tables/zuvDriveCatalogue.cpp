#include "tables/zuvDriveCatalogue.h"

#include <cstddef>

// The record mirrors the catalogue's fixed layout: ten fields, no padding, 346 bytes.
static_assert(alignof(zuvDriveCatalogueEntry) == 1, "the record is bytes only");
static_assert(offsetof(zuvDriveCatalogueEntry, modelNumber) == 0, "modelNumber");
static_assert(offsetof(zuvDriveCatalogueEntry, vendorModelNumber) == 41, "vendorModelNumber");
static_assert(offsetof(zuvDriveCatalogueEntry, sparePartNumber1) == 82, "sparePartNumber1");
static_assert(offsetof(zuvDriveCatalogueEntry, sparePartNumber2) == 115, "sparePartNumber2");
static_assert(offsetof(zuvDriveCatalogueEntry, sparePartNumber3) == 148, "sparePartNumber3");
static_assert(offsetof(zuvDriveCatalogueEntry, sparePartNumber4) == 181, "sparePartNumber4");
static_assert(offsetof(zuvDriveCatalogueEntry, optionNumber1) == 214, "optionNumber1");
static_assert(offsetof(zuvDriveCatalogueEntry, optionNumber2) == 247, "optionNumber2");
static_assert(offsetof(zuvDriveCatalogueEntry, optionNumber3) == 280, "optionNumber3");
static_assert(offsetof(zuvDriveCatalogueEntry, optionNumber4) == 313, "optionNumber4");
static_assert(sizeof(zuvDriveCatalogueEntry) == 346, "record width");

// Rows are the maker's product list; none are given to this tree (see the header).
constexpr std::array<zuvDriveCatalogueEntry, zuvDriveCatalogueRowCount> zuvDriveCatalogue{};

// No header, no terminator, no padding between rows: the table is its rows and nothing else.
static_assert(zuvDriveCatalogueRowCount == 0 || sizeof(zuvDriveCatalogue) == zuvDriveCatalogueRowCount * 346,
              "table width");
