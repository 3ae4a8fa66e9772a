#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "sim/hosttools/zuvFakeHostTools.h"
#include "tests/vmware/fakeHostSystem.h"
#include "utils/zuvUtils.h"
#include "utilsTestLog.h"

using utilstest::debugMessages;
using utilstest::hasMessage;
using utilstest::mainMessages;
using utilstest::mainMessagesAt;
using vmwaretest::FakeHostSystem;
using vmwaretest::FakeInterface;
using Addresses = std::vector<std::string>;

class UtilsHostIdentity : public ::testing::Test {
protected:
    void SetUp() override {
        utilstest::startLogging();
        utilstest::clearLogs();
        zuvUtils::osVersion.clear();
        zuvUtils::osName.clear();
        zuvUtils::primaryIPv4Address.clear();
        zuvUtils::auxIPv4Address.clear();
    }
    void interfaces(std::vector<FakeInterface> list) { host.interfaces = std::move(list); }
    FakeHostSystem host;
    zuvUtils utils;
};

TEST_F(UtilsHostIdentity, UnameValuesAndTheirFailure) {
    EXPECT_EQ(utils.getHostName(), "esx01");
    EXPECT_EQ(utils.getKernelInfo(), "VMkernel esx01 8.0.2 #1 SMP Release build-22380479 x86_64");
    host.unameError = EFAULT;
    EXPECT_EQ(utils.getHostName(), " ");
    EXPECT_EQ(utils.getKernelInfo(), " ");
    EXPECT_TRUE(hasMessage(mainMessagesAt("ERROR"), "uname failed with error = " + std::to_string(EFAULT)));
    int type = 0;
    EXPECT_TRUE(utils.getOSType(type));
    EXPECT_EQ(type, 104);
}

TEST_F(UtilsHostIdentity, ValidAddresses) {
    struct Case {
        const char* text;
        bool valid;
    } cases[] = {{"10.0.0.1", true},   {"0.0.0.0", false}, {" ", false},   {"", false},
                 {"256.1.1.1", false}, {"10.0.0", false},  {"::1", false}, {"127.0.0.1", true}};
    for (const Case& c : cases) EXPECT_EQ(utils.isValidIPv4Address(c.text), c.valid) << c.text;
}

TEST_F(UtilsHostIdentity, ScanSkipsLoopbackAndOtherFamilies) {
    interfaces({{"lo", AF_INET, "127.0.0.1"},
                {"vmk0", AF_INET, "10.0.0.1"},
                {"vmk0", AF_INET6, "fe80::1"},
                {"vmk1", 0, ""},
                {"vmk2", AF_INET, "127.0.0.1"},  // loopback address on another interface
                {"lo", AF_INET, "10.9.9.9"},     // any address on lo
                {"vmk3", AF_INET, "10.0.0.2"},
                {"vmk4", AF_INET, "10.0.0.1"}});  // repeated address stays
    EXPECT_EQ(utils.getIPv4Addresses(), (Addresses{"10.0.0.1", "10.0.0.2", "10.0.0.1"}));
    EXPECT_EQ(host.listsFreed, host.listsHandedOut);
    EXPECT_TRUE(hasMessage(debugMessages(), "I/F Name: [lo] - IP Address: [127.0.0.1]"));
    EXPECT_TRUE(hasMessage(debugMessages(), "I/F Name: [vmk3] - IP Address: [10.0.0.2]"));
    EXPECT_EQ(zuvUtils::auxIPv4Address, "10.0.0.1");
}

TEST_F(UtilsHostIdentity, AuxiliaryAddressIsStickyUntilItGoes) {
    struct Step {
        std::vector<FakeInterface> interfaces;
        const char* expectedAux;
    } steps[] = {
        {{{"vmk0", AF_INET, "10.0.0.2"}}, "10.0.0.2"},
        {{{"vmk0", AF_INET, "10.0.0.1"}, {"vmk1", AF_INET, "10.0.0.2"}}, "10.0.0.2"},  // still there
        {{{"vmk0", AF_INET, "10.0.0.3"}, {"vmk1", AF_INET, "10.0.0.4"}}, "10.0.0.3"},  // gone: first
        {{{"lo", AF_INET, "127.0.0.1"}}, "127.0.0.1"},                                 // none left
        {{{"vmk0", AF_INET, "10.0.0.5"}}, "10.0.0.5"},
    };
    for (Step& step : steps) {
        interfaces(step.interfaces);
        utils.getIPv4Addresses();
        EXPECT_EQ(zuvUtils::auxIPv4Address, step.expectedAux);
    }
    host.getifaddrsError = ENOMEM;
    EXPECT_TRUE(utils.getIPv4Addresses().empty());
    EXPECT_EQ(zuvUtils::auxIPv4Address, "127.0.0.1");
}

TEST_F(UtilsHostIdentity, PrimaryAddressIsFixedUntilRefreshed) {
    interfaces({{"vmk0", AF_INET, "10.0.0.2"}});
    EXPECT_EQ(utils.getPrimaryIPv4Address(), "10.0.0.2");  // scans once to fill the auxiliary
    EXPECT_EQ(host.listsHandedOut, 1);
    EXPECT_TRUE(hasMessage(debugMessages(), "Get aux IPv4 address populated"));
    EXPECT_TRUE(hasMessage(debugMessages(), "primaryIPv4Address= 10.0.0.2 auxIPv4Address=10.0.0.2 tempIP=10.0.0.2"));

    interfaces({{"vmk0", AF_INET, "10.0.0.1"}, {"vmk1", AF_INET, "10.0.0.2"}});
    EXPECT_EQ(utils.getPrimaryIPv4Address(), "10.0.0.2");
    EXPECT_EQ(host.listsHandedOut, 1);  // no scan once set
    EXPECT_EQ(utils.refreshIPv4Addresses(), (Addresses{"10.0.0.1", "10.0.0.2"}));
    EXPECT_EQ(zuvUtils::auxIPv4Address, "10.0.0.2");
    EXPECT_EQ(utils.getPrimaryIPv4Address(), "10.0.0.1");  // the refresh takes the first address

    interfaces({{"lo", AF_INET, "127.0.0.1"}});
    EXPECT_EQ(utils.getPrimaryIPv4Address(), "10.0.0.1");  // not tested against the host
    EXPECT_TRUE(utils.refreshIPv4Addresses().empty());
    EXPECT_EQ(utils.getPrimaryIPv4Address(), "127.0.0.1");
}

TEST_F(UtilsHostIdentity, PrimaryAddressTakesAKnownAuxiliaryWithoutScanning) {
    zuvUtils::auxIPv4Address = "10.1.1.1";
    interfaces({{"vmk0", AF_INET, "10.0.0.9"}});
    EXPECT_EQ(utils.getPrimaryIPv4Address(), "10.1.1.1");
    EXPECT_EQ(host.listsHandedOut, 0);
    EXPECT_TRUE(utils.setPrimaryIPv4Address({}));
    EXPECT_EQ(utils.getPrimaryIPv4Address(), "127.0.0.1");
}

TEST_F(UtilsHostIdentity, LoopbackOnlyHostStandsAsLoopback) {
    interfaces({{"lo", AF_INET, "127.0.0.1"}});
    EXPECT_EQ(utils.getPrimaryIPv4Address(), "127.0.0.1");
}

class UtilsOSVersion : public UtilsHostIdentity {
protected:
    zuvsim::FakeHostTools tools{ZUV_SOURCE_DIR};
    size_t localcliCalls() const { return tools.calls().size(); }
};

TEST_F(UtilsOSVersion, VersionAndNameLoseAllWhiteSpaceAndAreCached) {
    tools.answer("localcli", "system version get",
                 "   Product: VMware ESXi\n   Version: 8.0 U2\n   Build: Releasebuild-22380479\n");
    tools.clearCalls();
    EXPECT_EQ(utils.getOSVersion(), "8.0U2");
    EXPECT_EQ(utils.getOSName(), "VMwareESXi");
    EXPECT_EQ(localcliCalls(), 2u);
    tools.answer("localcli", "system version get", "   Product: Other\n   Version: 9\n");
    EXPECT_EQ(utils.getOSVersion(), "8.0U2");
    EXPECT_EQ(utils.getOSName(), "VMwareESXi");
    EXPECT_EQ(localcliCalls(), 2u);
}

TEST_F(UtilsOSVersion, AnswersAreJoinedAndTakenBehindTheFirstColon) {
    // A long value passes the 40-byte reads intact.
    const std::string longVersion(100, '9');
    tools.answer("localcli", "system version get", "Version: " + longVersion + "\n");
    EXPECT_EQ(utils.getOSVersion(), longVersion);
    zuvUtils::osVersion.clear();
    tools.answer("localcli", "system version get",
                 "Product: VMware ESXi\nProduct Line: embedded\nVersion: 7\nOther Version: x\n");
    EXPECT_EQ(utils.getOSVersion(), "7OtherVersion:x");
    EXPECT_EQ(utils.getOSName(), "VMwareESXiProductLine:embedded");
}

TEST_F(UtilsOSVersion, EmptyAnswerIsNotCachedAndTextWithoutColonIsKeptWhole) {
    tools.answer("localcli", "system version get", "no match here\n");
    tools.clearCalls();
    EXPECT_EQ(utils.getOSVersion(), "");
    EXPECT_EQ(utils.getOSVersion(), "");
    EXPECT_EQ(localcliCalls(), 2u);  // asked again each time
    // grep -i keeps "PRODUCT" lines without a colon: the whole text stays.
    tools.answer("localcli", "system version get", "  PRODUCT  of vendor \n");
    EXPECT_EQ(utils.getOSName(), "PRODUCTofvendor");
}

TEST_F(UtilsOSVersion, SyncPersistentStorageReportsAFailingTool) {
    tools.installIn("/bin", "vim-cmd");
    tools.answer("vim-cmd", "hostsvc/firmware/sync_config", "");
    utils.syncPersistentStorage();
    EXPECT_TRUE(mainMessages().empty());
    tools.fail("vim-cmd", "hostsvc/firmware/sync_config", 2);
    utils.syncPersistentStorage();
    EXPECT_TRUE(hasMessage(mainMessagesAt("WARNING"), "Failed to synchronize persistent storage. (0x200)"));
    EXPECT_EQ(tools.calls().back(), "vim-cmd hostsvc/firmware/sync_config");
}
