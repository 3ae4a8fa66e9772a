// Against QEMU's own BMC, loaded with the repository file that runKernelTests.sh writes, through
// the real driver; Debian's ipmitool reads the same repository through the same /dev/ipmi0.
#include "guestSupport.h"
#include "ipmi/zuvSDRRepositoryCache.h"

#include <gtest/gtest.h>

#include <vector>

// Get SDR Repository Info, Reserve SDR Repository and Get SDR, as the cache uses them.
TEST(BmcSim, RepositoryCacheEqualsIpmitoolDump) {
    const size_t recordsInFile = std::strtoul(zuvkernel::bootValue("zuvsdrcount").c_str(), nullptr, 10);
    zuvIPMI::SDRRepositoryCache cache(&zuvkernel::service());  // ipmitool needs the node the first open made
    ASSERT_EQ(0, std::system("ipmitool -I open sdr dump /tmp/sdr.dump >/dev/null 2>&1"));
    const std::string dump = zuvtest::readFile("/tmp/sdr.dump");
    std::vector<std::string> peer;  // each record as 255 bytes, zero behind its length
    for (size_t at = 0; at + 5 <= dump.size(); at += 5 + uint8_t(dump[at + 4])) {
        peer.push_back(dump.substr(at, 5 + uint8_t(dump[at + 4])));
        peer.back().resize(sizeof(zuvIPMI::GENERIC_SDR));
    }
    // ipmitool stops at the file's last record, which has no body ("invalid length 0").
    ASSERT_EQ(recordsInFile - 1, peer.size());

    const std::vector<zuvIPMI::GENERIC_SDR> records(cache.begin(), cache.end());
    ASSERT_EQ(recordsInFile, records.size());
    for (size_t i = 0; i < peer.size(); ++i) {
        EXPECT_EQ(peer[i], std::string(std::begin(records[i].bytes), std::end(records[i].bytes))) << "record " << i;
    }
    EXPECT_EQ(0, records.back().bytes[4]);
}
