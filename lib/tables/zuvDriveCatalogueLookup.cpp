#include <cstring>

#include "tables/zuvDriveCatalogue.h"

namespace {

// A field equals `number` only if `number` fits with its NUL inside the field; the compare
// never reads past the field, even in a row whose field lacks its NUL.
template <std::size_t width>
bool fieldEquals(const char (&field)[width], const char* number, std::size_t length) {
    return length < width && std::memcmp(field, number, length) == 0 && field[length] == '\0';
}

}  // namespace

const zuvDriveCatalogueEntry* findDriveCatalogueEntry(const char* number, const zuvDriveCatalogueEntry* rows,
                                                      std::size_t rowCount) {
    if (number == nullptr || number[0] == '\0') return nullptr;
    const std::size_t length = std::strlen(number);
    for (std::size_t i = 0; i < rowCount; ++i) {
        if (fieldEquals(rows[i].modelNumber, number, length) || fieldEquals(rows[i].vendorModelNumber, number, length))
            return &rows[i];
    }
    return nullptr;
}

const zuvDriveCatalogueEntry* findDriveCatalogueEntry(const char* number) {
    return findDriveCatalogueEntry(number, zuvDriveCatalogue.data(), zuvDriveCatalogue.size());
}
