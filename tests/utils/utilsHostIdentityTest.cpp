// The IPv4 address that stands for the host: the auxiliary address that each scan keeps, and the
// primary address, fixed until a refresh.
#include "hostTestFixture.h"

TEST_F(HostTest, AuxiliaryAddressStaysUntilItGoesFromTheHost) {
    for (const std::string text : {"0.0.0.0", " ", "10.0.0", "::1", "256.1.1.1"})
        EXPECT_FALSE(utils.isValidIPv4Address(text)) << text;
    EXPECT_TRUE(utils.isValidIPv4Address("10.0.0.1"));
    // addresses of the interfaces vmk0, vmk1... ("lo": only the loopback interface) | auxiliary address after a scan
    for (const Lines& row : table(R"(
10.0.0.2 | 10.0.0.2
10.0.0.1 10.0.0.2 | 10.0.0.2
10.0.0.3 10.0.0.4 | 10.0.0.3
lo | 127.0.0.1
10.0.0.5 | 10.0.0.5
)")) {
        std::istringstream addresses(row[0]);
        host.interfaces.clear();
        for (std::string a; addresses >> a;)
            host.interfaces.push_back({a == "lo" ? "lo" : "vmk", AF_INET, a == "lo" ? "127.0.0.1" : a});
        utils.getIPv4Addresses(), check(row, zuvUtils::auxIPv4Address);
    }
}

TEST_F(HostTest, PrimaryAddressIsFixedUntilRefreshed) {
    host.interfaces = {{"vmk0", AF_INET, "10.0.0.2"}};
    EXPECT_EQ(utils.getPrimaryIPv4Address(), "10.0.0.2");  // one scan fills the auxiliary address
    check({"first", "", "DEBUG ZUV_UTILS: Get aux IPv4 address populated",
           "DEBUG ZUV_UTILS: primaryIPv4Address= 10.0.0.2 auxIPv4Address=10.0.0.2 tempIP=10.0.0.2"},
          "");
    host.interfaces = {{"vmk0", AF_INET, "10.0.0.1"}, {"vmk1", AF_INET, "10.0.0.2"}};
    EXPECT_EQ(utils.getPrimaryIPv4Address(), "10.0.0.2");  // no scan once it is set
    EXPECT_EQ(utils.refreshIPv4Addresses(), (Lines{"10.0.0.1", "10.0.0.2"}));
    EXPECT_EQ(join({utils.getPrimaryIPv4Address(), zuvUtils::auxIPv4Address}), "10.0.0.1,10.0.0.2");
    host.interfaces = {{"lo", AF_INET, "127.0.0.1"}};
    EXPECT_EQ(utils.getPrimaryIPv4Address(), "10.0.0.1");  // not tested against the host
    EXPECT_TRUE(utils.refreshIPv4Addresses().empty());
    EXPECT_EQ(utils.getPrimaryIPv4Address(), "127.0.0.1");
    zuvUtils::primaryIPv4Address.clear(), zuvUtils::auxIPv4Address = "10.1.1.1";
    EXPECT_EQ(join({utils.getPrimaryIPv4Address(), std::to_string(host.listsHandedOut)}), "10.1.1.1,3");  // no scan
    EXPECT_TRUE(utils.setPrimaryIPv4Address({}));
    EXPECT_EQ(utils.getPrimaryIPv4Address(), "127.0.0.1");
}
