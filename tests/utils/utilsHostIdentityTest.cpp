// The IPv4 address that stands for the host: the auxiliary address that each scan keeps, and the
// primary address, fixed until a refresh.
#include "hostTestFixture.h"

TEST_F(HostTest, AuxiliaryAddressFollowsTheHostAndThePrimaryIsFixedUntilRefreshed) {
    for (const std::string text : {"0.0.0.0", "10.0.0", "::1"}) EXPECT_FALSE(utils.isValidIPv4Address(text)) << text;
    EXPECT_TRUE(utils.isValidIPv4Address("10.0.0.1"));
    // addresses of the interfaces vmk0, vmk1... ("lo": only the loopback interface) | call ("fresh": a new process)
    // | its result, then the primary and auxiliary addresses ("-": empty) and the interface lists handed out | lines
    // logged
    for (const Lines& row : table(R"(
10.0.0.2 | primary | 10.0.0.2 10.0.0.2 10.0.0.2 1 | DEBUG ZUV_UTILS: Get aux IPv4 address populated
    | DEBUG ZUV_UTILS: primaryIPv4Address= 10.0.0.2 auxIPv4Address=10.0.0.2 tempIP=10.0.0.2
10.0.0.1 10.0.0.2 | primary | 10.0.0.2 10.0.0.2 10.0.0.2 1
10.0.0.1 10.0.0.2 | refresh | 10.0.0.1,10.0.0.2 10.0.0.1 10.0.0.2 2
lo | primary | 10.0.0.1 10.0.0.1 10.0.0.2 2
lo | refresh | - 127.0.0.1 127.0.0.1 3
lo | fresh | - - - 3
10.0.0.2 | scan | 10.0.0.2 - 10.0.0.2 4
10.0.0.1 10.0.0.2 | scan | 10.0.0.1,10.0.0.2 - 10.0.0.2 5
lo | scan | - - 127.0.0.1 6
10.0.0.6 | primary | 127.0.0.1 127.0.0.1 127.0.0.1 6 | !DEBUG ZUV_UTILS: Get aux IPv4 address populated
)")) {
        std::istringstream addresses(row[0]);
        host.interfaces.clear();
        for (std::string a; addresses >> a;)
            host.interfaces.push_back({a == "lo" ? "lo" : "vmk", AF_INET, a == "lo" ? "127.0.0.1" : a});
        zuvtest::clearLogs();
        const std::string result = row[1] == "primary" ? utils.getPrimaryIPv4Address()
                                   : row[1] == "scan"  ? join(utils.getIPv4Addresses())
                                   : row[1] == "refresh"
                                       ? join(utils.refreshIPv4Addresses())
                                       : (zuvUtils::primaryIPv4Address.clear(), zuvUtils::auxIPv4Address.clear(), "");
        const auto shown = [](const std::string& text) { return text.empty() ? std::string("-") : text; };
        check(row,
              join({shown(result), shown(zuvUtils::primaryIPv4Address), shown(zuvUtils::auxIPv4Address),
                    std::to_string(host.listsHandedOut)},
                   " "),
              2);
    }
}
