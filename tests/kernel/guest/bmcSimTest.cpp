// Against QEMU's own BMC behind the emulated KCS interface, through the real driver.
#include "countingIpmiService.h"
#include "ipmi/zuvIPMIExceptions.h"
#include "ipmi/zuvIPMIService.h"
#include "ipmi/zuvSDRRepositoryCache.h"
#include "utils/zuvStringUtils.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iostream>
#include <string>
#include <vector>

namespace {

zuvIPMIService& service() { return *static_cast<zuvIPMIService*>(zuvIPMIService::getIPMIServiceInstance()); }

}  // namespace

TEST(BmcSim, RepositoryInfoAndReservationAreThoseOfTheBmc) {
    zuvIPMI::SDR_REPOSITORY_INFO info{};
    service().getSDRRepositoryInfo(info);
    EXPECT_EQ(0x51, info.sdrVersion);
    EXPECT_EQ(1, info.recordCount);

    uint16_t first = 0, second = 0;
    service().reserveSDRRepository(first);
    service().reserveSDRRepository(second);
    // This BMC hands out the same reservation until its repository changes.
    EXPECT_EQ(1, first);
    EXPECT_EQ(1, second);
}

TEST(BmcSim, ElevenByteDeviceIdIsAnInvalidResponseSize) {
    zuvIPMI::DEVICE_ID_INFO info{};
    try {
        service().getDeviceID(info);
        FAIL() << "an 11-byte Get Device ID body was accepted";
    } catch (const zuvIPMI::InvalidResponseDataSizeException& e) {
        EXPECT_STREQ("Incorrect response data size for Get Device ID!", e.what());
    }
    // The 11 bytes that came are still in the record; the absent auxiliary revision is zero.
    EXPECT_EQ(0, info.auxiliaryFirmwareRevision[0] | info.auxiliaryFirmwareRevision[1] |
                     info.auxiliaryFirmwareRevision[2] | info.auxiliaryFirmwareRevision[3]);
}

TEST(BmcSim, RmcCommandsSeeInvalidCommandWithoutBody) {
    // The raw transaction: completion code 0xC1 and no body, the caller's buffer untouched.
    uint8_t body[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    uint8_t request[60] = {};
    uint16_t requestSize = sizeof request;
    uint16_t responseSize = sizeof body;
    uint8_t code = 0;
    service().transfer(0x3A, 0x80, 0, request, requestSize, body, responseSize, &code);
    EXPECT_EQ(0xC1, code);
    EXPECT_EQ(0, responseSize);
    EXPECT_EQ(0xEE, body[0]);

    // Block commands don't look at the completion code: a reply without body is status 0.
    EXPECT_NO_THROW(service().execCommand("WriteInventory", std::string(100, 'i')));
    std::vector<int> results;
    service().deliverData("MPEventGen", "{\"ID\":1}", [&](int result) { results.push_back(result); });
    EXPECT_EQ(std::vector<int>{0}, results);

    // An empty doorbell answer: no inventory, telemetry "nothing" (2), IOFWU byte 0.
    EXPECT_EQ(0, service().checkDoorBell(1));
    EXPECT_EQ(2, service().checkDoorBell(2));
    EXPECT_EQ(0, service().checkDoorBell(3));
}

TEST(BmcSim, CacheHoldsTheOneRecordReadInFourTransactions) {
    zuvkernel::CountingIpmiService counting(service());
    zuvIPMI::SDRRepositoryCache cache(&counting);
    std::vector<zuvIPMI::GENERIC_SDR> records(cache.begin(), cache.end());

    ASSERT_EQ(1u, records.size());
    const uint8_t* r = records[0].bytes;
    std::cout << "ZUVK RECORD " << zuvStringUtils::bytesToHexString(r, 5 + r[4]) << std::endl;
    // The BMC's one record: a compact sensor record (type 0x02) of 35 bytes for its watchdog.
    const std::vector<uint8_t> watchdog{0x00, 0x00, 0x51, 0x02, 0x23, 0x20, 0x00, 0x00, 0x23, 0x01,
                                        0x63, 0x00, 0x23, 0x6f, 0x0f, 0x01, 0x00, 0x00, 0x00, 0x00,
                                        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                                        0x00, 0xc8, 'W',  'a',  't',  'c',  'h',  'd',  'o',  'g'};
    EXPECT_EQ(watchdog, std::vector<uint8_t>(r, r + watchdog.size()));
    // Nothing behind the record's own length.
    for (size_t i = watchdog.size(); i < sizeof records[0].bytes; ++i) ASSERT_EQ(0, r[i]) << i;
    EXPECT_EQ(1, counting.infoCalls);
    EXPECT_EQ(1, counting.reserveCalls);
    EXPECT_EQ(1 + 3, counting.getSdrCalls);  // header, then 16 + 16 + 3 bytes of body

    // Loaded once: walking again makes no traffic.
    EXPECT_EQ(1, cache.rend() - cache.rbegin());
    EXPECT_EQ(1 + 3, counting.getSdrCalls);
}
