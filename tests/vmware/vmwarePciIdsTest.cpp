// PCI id look-up in the hardware listing, with the field join and the value extraction.
#include <gtest/gtest.h>
#include <unistd.h>

#include "vmware/zuvVMwareOSUtils.h"
#include "vmwareTestLog.h"
#include "zuvSandbox.h"

namespace {

constexpr const char* kListing = "/opt/kelzuv/tmp/zuv_hwlist.txt";

// Blocks in the form of "localcli hardware pci list", one per device, separated by empty lines.
const char* const kBlocks =
    "0000:00:00.0\n"
    "   Address: 0000:00:00.0\n"
    "   VMkernel Name:\n"
    "   Vendor Name: Intel Corporation\n"
    "   Device Name: Sky Lake-E DMI3 Registers\n"
    "   Vendor ID: 0x8086\n"
    "   Device ID: 0x2020\n"
    "   SubVendor ID: 0x15d9\n"
    "   SubDevice ID: 0x095d\n"
    "   Device Class: 0x0600\n"
    "\n"
    "0000:3b:00.0\n"
    "   Address: 0000:3b:00.0\n"
    "   VMkernel Name: vmnic4\n"
    "   Vendor Name: Mellanox Technologies\n"
    "   Device Name: MT27800 Family [ConnectX-5]\n"
    "   Vendor ID: 0x15b3\n"
    "   Device ID: 0x1017\n"
    "   SubVendor ID: 0x15b3\n"
    "   SubDevice ID: 0x0007\n"
    "\n"
    "0000:3b:00.1\n"
    "   Address: 0000:3b:00.1\n"
    "   VMkernel Name: vmnic5\n"
    "   Vendor Name: Mellanox Technologies\n"
    "   Device Name: MT27800 Family [ConnectX-5]\n"
    "   Vendor ID: 0x15b4\n"
    "   Device ID: 0x1018\n"
    "\n"
    "0000:5e:00.0\n"
    "   Device Name: I/O Hub Odd Ids\n"
    "   Vendor ID: 0xZZ12\n"
    "   Device ID: 0x12\n"
    "   SubVendor ID: 0x1234567\n"
    "   SubDevice ID:\n"
    "\n"
    "0000:af:00.0\n"
    "   Device Name: Lonely Vendor\n"
    "   Vendor ID: 0xabcd\n"
    "\n";

class PciIdsTest : public ::testing::Test {
protected:
    void SetUp() override {
        vmwaretest::startLogging();
        vmwaretest::clearLogs();
        zuvtest::writeFile(kListing, kBlocks);
    }
    zuvVMwareOSUtils os;
};

using Pair = std::pair<std::string, std::string>;

TEST_F(PciIdsTest, IdsComeFromTheBlockOfTheKeyDeviceFirst) {
    struct Case {
        const char* key;
        Pair ids, subIds;
    };
    const Case cases[] = {
        {"0000:00:00.0", {"0x2020", "0x8086"}, {"0x095d", "0x15d9"}},
        {"0000:3b:00.0", {"0x1017", "0x15b3"}, {"0x0007", "0x15b3"}},
        {"vmnic5", {"0x1018", "0x15b4"}, {"", ""}},                // from a line inside the block
        {"Mellanox", {"0x1017", "0x15b3"}, {"0x0007", "0x15b3"}},  // several blocks: the first wins
        {"I/O Hub", {"", "0xZZ12"}, {"", "0x1234"}},               // short ids don't match, long ones are cut
        {"Lonely Vendor", {"", "0xabcd"}, {"", ""}},
        {"0000:ff:00.0", {"", ""}, {"", ""}},
        {"0000:3b:00\\.1", {"0x1018", "0x15b4"}, {"", ""}},  // the key is a regular expression
    };
    for (const Case& c : cases) {
        EXPECT_EQ(os.getPciIds(c.key), c.ids) << c.key;
        EXPECT_EQ(os.getPciSubIds(c.key), c.subIds) << c.key;
    }
}

TEST_F(PciIdsTest, MissingIdsAreLoggedOnePerMember) {
    os.getPciIds("Lonely Vendor");
    auto lines = vmwaretest::debugMessages();
    EXPECT_TRUE(vmwaretest::hasMessage(lines, "Cound not fetch deviceId for Lonely Vendor"));
    EXPECT_FALSE(vmwaretest::hasMessage(lines, "Cound not fetch vendorId for Lonely Vendor"));
    EXPECT_TRUE(vmwaretest::hasMessage(lines, "vendorId = 0xabcd, deviceId = "));

    vmwaretest::clearLogs();
    os.getPciSubIds("nothing-like-this");
    lines = vmwaretest::debugMessages();
    EXPECT_TRUE(vmwaretest::hasMessage(lines, "Cound not fetch subVendorId for nothing-like-this"));
    EXPECT_TRUE(vmwaretest::hasMessage(lines, "Cound not fetch subDeviceId for nothing-like-this"));
    EXPECT_TRUE(vmwaretest::hasMessage(lines, "subVendorId = , subDeviceId = "));
}

TEST_F(PciIdsTest, MissingListingGivesEmptyIds) {
    unlink(kListing);
    EXPECT_EQ(os.getPciIds("0000:00:00.0"), Pair("", ""));
    EXPECT_EQ(os.getPciSubIds("0000:00:00.0"), Pair("", ""));
}

TEST_F(PciIdsTest, KeyCannotRunASecondCommand) {
    const char* const keys[] = {
        "x' ; touch /tmp/pwned ; echo '",
        "0000:00:00.0'; touch /tmp/pwned; '",
        "x/ { system(\"touch /tmp/pwned\") } /y",
        "x\\/ { system(\"touch /tmp/pwned\") } /y",
        "x\\\\/ { system(\"touch /tmp/pwned\") } /y",
        "$(touch /tmp/pwned)",
        "`touch /tmp/pwned`",
        "; touch /tmp/pwned",
        "| touch /tmp/pwned",
        "x\n{ system(\"touch /tmp/pwned\") }",
        "trailing\\",
    };
    for (const char* key : keys) {
        EXPECT_EQ(os.getPciIds(key), Pair("", "")) << key;
        EXPECT_EQ(os.getPciSubIds(key), Pair("", "")) << key;
        EXPECT_FALSE(zuvtest::fileExists("/tmp/pwned")) << key;
        unlink("/tmp/pwned");
    }
    // A quote is refused before any command runs, with a warning.
    vmwaretest::clearLogs();
    os.getPciIds("it's");
    EXPECT_FALSE(vmwaretest::mainMessages().empty());
}

TEST_F(PciIdsTest, JoinFieldLinesPutsACommaBeforeEachTrimmedField) {
    struct Case {
        std::vector<std::string> lines;
        std::string joined;
    };
    const Case cases[] = {
        {{"   Vendor ID: 0x8086\n", "   Device ID: 0x2020\n"}, " ,Vendor ID: 0x8086 ,Device ID: 0x2020"},
        {{"  no colon here \t\n"}, " , no colon here"},
        {{"Key:   value with  blanks  \n"}, " ,Key: value with  blanks"},
        {{"a:b:c\n"}, " ,a: b:c"},
        {{"Key:\n"}, " ,Key: "},
        {{"\n"}, " , "},
        {{}, ""},
    };
    for (const Case& c : cases) EXPECT_EQ(os.joinFieldLines(c.lines), c.joined);
}

TEST_F(PciIdsTest, ExtractFieldValueTakesWhatFollowsColonAndBlank) {
    const std::string text = " ,Vendor ID: 0x8086 ,Device ID: 0x20201 ,Name: a:b";
    struct Case {
        const char* expression;
        const char* value;
    };
    const Case cases[] = {
        {",Vendor ID: 0x[A-Za-z0-9]{4}", "0x8086"},
        {",Device ID: 0x[A-Za-z0-9]{4}", "0x2020"},
        {",Name: [a-z:]+", "a:b"},
        {"ID: 0x[0-9]+", "0x8086"},
        {",SubVendor ID: 0x[A-Za-z0-9]{4}", ""},
        {"(unclosed", ""},
        {"z*", ""},
    };
    for (const Case& c : cases) EXPECT_EQ(os.extractFieldValue(text, c.expression), c.value) << c.expression;
    const auto warnings = vmwaretest::mainMessages();
    ASSERT_EQ(warnings.size(), 2u);
    EXPECT_EQ(warnings[0].rfind("Error Compiling Regex, Return Value: ", 0), 0u) << warnings[0];
    EXPECT_EQ(warnings[1], "Issue in identifying details from localcli output : " + text);
    EXPECT_TRUE(vmwaretest::hasMessage(vmwaretest::debugMessages(), "Error detecting valueType : No match"));
}

}  // namespace
