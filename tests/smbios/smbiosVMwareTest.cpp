// SMBIOSVMware: family, manufacturer and platform code from the host's type 1 record.
#include <stdexcept>
#include <string>

#include "platform/SMBIOSVMware.h"
#include "smbiosFixture.h"

using smbiostest::SmbiosTest;

TEST_F(SmbiosTest, PlatformCodeFollowsTheFamilyStringExactly) {
    struct Case {
        std::string family;
        int32_t code;
    } cases[] = {
        {"PLATFAMILY00001", 0},   {"PLATFAMILY00002", 1},  {"PLATFAMILY00003", 2},
        {"PLATFAMILY00004", 4},   {"PLATFAMILY00005", -1}, {"platfamily00001", -1},
        {"PLATFAMILY000010", -1}, {"PLATFAMILY0000", -1},  {"", -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.family);
        smbiosClose();
        zuvsim::SmbiosSystem system;
        system.family = c.family;
        system.manufacturer = "Maker " + c.family;
        smbiostest::installImage(zuvsim::SmbiosImage().addBios().addType1(system));
        SMBIOSVMware smbios;
        EXPECT_EQ(smbios.getPlatform(), c.code);
        // An empty family is string number 0, which reads as "Undefined".
        EXPECT_EQ(smbios.getFamily(), c.family.empty() ? "Undefined" : c.family);
        EXPECT_EQ(smbios.getManufacturer(), "Maker " + c.family);
    }
}

TEST_F(SmbiosTest, WithoutSystemRecordTheQueriesFail) {
    const char* images[] = {"no device", "no type 1 structure"};
    for (const char* which : images) {
        SCOPED_TRACE(which);
        smbiosClose();
        if (std::string(which) == "no device") {
            ::unlink(smbiosDevicePath);
        } else {
            smbiostest::installImage(zuvsim::SmbiosImage().addBios().addSlot(zuvsim::SmbiosSlot()));
        }
        SMBIOSVMware smbios;
        EXPECT_THROW(smbios.getFamily(), smbios_exceptions::not_initialized);
        EXPECT_THROW(smbios.getManufacturer(), smbios_exceptions::not_initialized);
        try {
            smbios.getPlatform();
            ADD_FAILURE() << "getPlatform must throw";
        } catch (const std::runtime_error& e) {
            EXPECT_STREQ(e.what(), "Couldnot Fetch the Platform details");
        }
    }
}

TEST_F(SmbiosTest, SmbiosTableForwardsToTheReader) {
    zuvsim::SmbiosSlot slot;
    slot.designation = "Riser";
    smbiostest::installImage(zuvsim::SmbiosImage().addType1("F").addSlot(slot).addSlot(slot));
    SMBIOSVMware smbios;
    void* table = nullptr;
    unsigned count = 0;
    ASSERT_EQ(smbios.getSmbiosTable(9, &table, &count), 0);
    ASSERT_EQ(count, 2u);
    EXPECT_STREQ(static_cast<smbiosSystemSlot*>(table)[1].designation, "Riser");
    free(table);
    EXPECT_EQ(smbios.getSmbiosTable(41, &table, &count), -1);
    EXPECT_EQ(table, nullptr);
    EXPECT_EQ(count, 0u);
}
