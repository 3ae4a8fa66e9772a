// Against QEMU's own BMC, loaded with the repository file that runKernelTests.sh writes, through
// the real driver; Debian's ipmitool reads the same repository through the same /dev/ipmi0.
#include "guestSupport.h"
#include "ipmi/zuvIPMIExceptions.h"
#include "ipmi/zuvSDRRepositoryCache.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

const size_t kRecordsInFile = std::strtoul(zuvkernel::bootValue("zuvsdrcount").c_str(), nullptr, 10);

// Forwards to the real service and counts the repository traffic of the cache.
struct CountingService : zuvIPMI::IPMIServiceInterface {
    void getDeviceID(zuvIPMI::DEVICE_ID_INFO& info) override { zuvkernel::service().getDeviceID(info); }
    void getSDRRepositoryInfo(zuvIPMI::SDR_REPOSITORY_INFO& info) override {
        ++infoCalls;
        zuvkernel::service().getSDRRepositoryInfo(info);
    }
    void reserveSDRRepository(uint16_t& reservationId) override {
        ++reserveCalls;
        zuvkernel::service().reserveSDRRepository(reservationId);
    }
    void getSDR(const zuvIPMI::GET_SDR_REQUEST& request, uint8_t* buffer, uint16_t capacity, uint16_t& size) override {
        ++getSdrCalls;
        zuvkernel::service().getSDR(request, buffer, capacity, size);
    }
    int infoCalls = 0, reserveCalls = 0, getSdrCalls = 0;
};

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
    zuvkernel::service();  // ipmitool needs the node that the first open makes
    ASSERT_EQ(0, std::system("ipmitool -I open sdr dump /tmp/sdr.dump >/dev/null 2>&1"));
    const std::string dump = zuvkernel::readText("/tmp/sdr.dump");
    std::vector<std::string> peer;  // each record as 255 bytes, zero behind its length
    for (size_t at = 0; at + 5 <= dump.size(); at += 5 + uint8_t(dump[at + 4])) {
        peer.push_back(dump.substr(at, 5 + uint8_t(dump[at + 4])));
        peer.back().resize(sizeof(zuvIPMI::GENERIC_SDR));
    }
    // ipmitool stops at the file's last record, which has no body ("invalid length 0").
    ASSERT_EQ(kRecordsInFile - 1, peer.size());

    CountingService counting;
    zuvIPMI::SDRRepositoryCache cache(&counting);
    const std::vector<zuvIPMI::GENERIC_SDR> records(cache.begin(), cache.end());
    ASSERT_EQ(kRecordsInFile, records.size());
    int transactions = 1;  // the last record: its header alone
    for (size_t i = 0; i < peer.size(); ++i) {
        EXPECT_EQ(peer[i], std::string(std::begin(records[i].bytes), std::end(records[i].bytes))) << "record " << i;
        transactions += 1 + (uint8_t(peer[i][4]) + 15) / 16;
    }
    EXPECT_EQ(0, records.back().bytes[4]);
    EXPECT_EQ(1, counting.infoCalls);
    EXPECT_EQ(1, counting.reserveCalls);
    EXPECT_EQ(transactions, counting.getSdrCalls);
}
