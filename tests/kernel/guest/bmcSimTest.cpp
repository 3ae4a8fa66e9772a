// Against QEMU's own BMC, loaded with the repository file of the host's generator, through the
// real driver; Debian's ipmitool reads the same repository through the same /dev/ipmi0.
#include "countingIpmiService.h"
#include "guestSupport.h"
#include "ipmi/zuvIPMIExceptions.h"
#include "ipmi/zuvIPMIService.h"
#include "ipmi/zuvSDRRepositoryCache.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

const size_t kRecordsInFile = std::strtoul(zuvkernel::bootValue("zuvsdrcount").c_str(), nullptr, 10);

}  // namespace

TEST(BmcSim, StandardCommandsThroughTheKernel) {
    zuvIPMI::SDR_REPOSITORY_INFO info{};
    zuvkernel::service().getSDRRepositoryInfo(info);
    EXPECT_EQ(0x51, info.sdrVersion);
    EXPECT_EQ(kRecordsInFile, info.recordCount);

    // This BMC leaves out the optional auxiliary firmware revision: 11 bytes, not 15.
    zuvIPMI::DEVICE_ID_INFO id{};
    try {
        zuvkernel::service().getDeviceID(id);
        FAIL() << "an 11-byte Get Device ID body was accepted";
    } catch (const zuvIPMI::InvalidResponseDataSizeException& e) {
        EXPECT_STREQ("Incorrect response data size for Get Device ID!", e.what());
    }
}

TEST(BmcSim, RepositoryCacheEqualsIpmitoolDump) {
    ASSERT_EQ(0, std::system("ipmitool -I open sdr dump /tmp/sdr.dump >/dev/null 2>&1"));
    const std::vector<uint8_t> dump = zuvkernel::readBytes("/tmp/sdr.dump");
    std::vector<std::vector<uint8_t>> peer;  // each record as 255 bytes, zero behind its length
    for (size_t at = 0; at + 5 <= dump.size(); at += 5 + dump[at + 4]) {
        peer.emplace_back(dump.begin() + at, dump.begin() + at + 5 + dump[at + 4]);
        peer.back().resize(sizeof(zuvIPMI::GENERIC_SDR));
    }
    // ipmitool stops at the file's last record, which has no body ("invalid length 0").
    ASSERT_EQ(kRecordsInFile - 1, peer.size());

    zuvkernel::CountingIpmiService counting(zuvkernel::service());
    zuvIPMI::SDRRepositoryCache cache(&counting);
    const std::vector<zuvIPMI::GENERIC_SDR> records(cache.begin(), cache.end());
    ASSERT_EQ(kRecordsInFile, records.size());
    int transactions = 1;  // the last record: its header alone
    for (size_t i = 0; i < peer.size(); ++i) {
        EXPECT_EQ(peer[i], std::vector<uint8_t>(records[i].bytes, std::end(records[i].bytes))) << "record " << i;
        transactions += 1 + (peer[i][4] + 15) / 16;
    }
    EXPECT_EQ(0, records.back().bytes[4]);
    EXPECT_EQ(1, counting.infoCalls);
    EXPECT_EQ(1, counting.reserveCalls);
    EXPECT_EQ(transactions, counting.getSdrCalls);
}
