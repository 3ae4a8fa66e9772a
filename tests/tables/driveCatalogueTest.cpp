// The drive catalogue's reader on rows made here, and the invariants of the committed table.

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "tables/zuvDriveCatalogue.h"

namespace {

template <std::size_t width>
void put(char (&field)[width], const std::string& text) {
    ASSERT_LT(text.size(), width);
    std::memset(field, 0, width);
    std::memcpy(field, text.data(), text.size());
}

zuvDriveCatalogueEntry row(const std::string& model, const std::string& vendorModel, const std::string& spare1) {
    zuvDriveCatalogueEntry entry{};
    put(entry.modelNumber, model);
    put(entry.vendorModelNumber, vendorModel);
    put(entry.sparePartNumber1, spare1);
    put(entry.optionNumber1, "O-" + spare1);
    return entry;
}

template <std::size_t width>
bool isFilled(const char (&field)[width]) {
    return field[0] != '\0';
}

// A field holds its NUL inside and zeros behind it.
template <std::size_t width>
bool isWellFormed(const char (&field)[width]) {
    const void* nul = std::memchr(field, '\0', width);
    if (nul == nullptr) return false;
    for (const char* p = static_cast<const char*>(nul); p != field + width; ++p)
        if (*p != '\0') return false;
    return true;
}

}  // namespace

TEST(DriveCatalogue, FindsByEitherModelNumberAndNeverByAnEmptyField) {
    const std::string widest40(40, 'W');
    std::vector<zuvDriveCatalogueEntry> rows = {
        row("EG000300JWEBF", "ST300MM0048", "759208-B21"),  // both numbers
        row("", "MZ7KH960HAJR", "P04564-B21"),              // manufacturer's number only
        row("MB2000GCWDA", "", "507632-B21"),               // maker's number only
        row(widest40, "", "ZZ-B21"),                        // a number of the maximum width
    };
    struct Case {
        const char* number;
        int row;  // -1: no match
    };
    const Case cases[] = {
        {"EG000300JWEBF", 0},   {"ST300MM0048", 0},    {"MZ7KH960HAJR", 1},
        {"MB2000GCWDA", 2},     {widest40.c_str(), 3}, {"", -1},  // must not select the row without a maker's number
        {nullptr, -1},          {"EG000300JWEB", -1},             // a prefix is no match
        {"EG000300JWEBFX", -1}, {"eg000300jwebf", -1}, {"759208-B21", -1},  // part numbers are no key
    };
    for (const Case& c : cases) {
        const zuvDriveCatalogueEntry* found = findDriveCatalogueEntry(c.number, rows.data(), rows.size());
        const zuvDriveCatalogueEntry* expected = c.row < 0 ? nullptr : &rows[c.row];
        EXPECT_EQ(found, expected) << (c.number ? c.number : "(null)");
    }
    // A key one character wider than a field can hold never matches it, even where the
    // field's 40 characters are the key's first 40.
    const std::string widest41 = widest40 + "W";
    EXPECT_EQ(findDriveCatalogueEntry(widest41.c_str(), rows.data(), rows.size()), nullptr);
    // A damaged row whose field lacks its NUL is not read past its end.
    zuvDriveCatalogueEntry damaged{};
    std::memset(damaged.modelNumber, 'D', sizeof damaged.modelNumber);
    EXPECT_EQ(findDriveCatalogueEntry(std::string(41, 'D').c_str(), &damaged, 1), nullptr);
    EXPECT_EQ(findDriveCatalogueEntry(std::string(40, 'D').c_str(), &damaged, 1), nullptr);
}

TEST(DriveCatalogue, CommittedTableKeepsItsInvariants) {
    std::set<std::string> models, vendorModels;
    for (std::size_t i = 0; i < zuvDriveCatalogue.size(); ++i) {
        const zuvDriveCatalogueEntry& e = zuvDriveCatalogue[i];
        SCOPED_TRACE("row " + std::to_string(i));
        EXPECT_TRUE(isWellFormed(e.modelNumber) && isWellFormed(e.vendorModelNumber) &&
                    isWellFormed(e.sparePartNumber1) && isWellFormed(e.sparePartNumber2) &&
                    isWellFormed(e.sparePartNumber3) && isWellFormed(e.sparePartNumber4) &&
                    isWellFormed(e.optionNumber1) && isWellFormed(e.optionNumber2) && isWellFormed(e.optionNumber3) &&
                    isWellFormed(e.optionNumber4));
        EXPECT_TRUE(isFilled(e.modelNumber) || isFilled(e.vendorModelNumber));
        if (isFilled(e.modelNumber)) {
            EXPECT_TRUE(models.insert(e.modelNumber).second) << e.modelNumber;
            EXPECT_EQ(findDriveCatalogueEntry(e.modelNumber), &e);
        }
        if (isFilled(e.vendorModelNumber)) {
            EXPECT_TRUE(vendorModels.insert(e.vendorModelNumber).second) << e.vendorModelNumber;
            EXPECT_EQ(findDriveCatalogueEntry(e.vendorModelNumber), &e);
        }
        EXPECT_TRUE(isFilled(e.sparePartNumber1) || isFilled(e.sparePartNumber2) || isFilled(e.sparePartNumber3) ||
                    isFilled(e.sparePartNumber4));
        EXPECT_EQ(isFilled(e.sparePartNumber1), isFilled(e.optionNumber1));
        EXPECT_EQ(isFilled(e.sparePartNumber2), isFilled(e.optionNumber2));
        EXPECT_EQ(isFilled(e.sparePartNumber3), isFilled(e.optionNumber3));
        EXPECT_EQ(isFilled(e.sparePartNumber4), isFilled(e.optionNumber4));
    }
    EXPECT_EQ(findDriveCatalogueEntry(""), nullptr);
}
