// The SDR repository cache over the real service and the simulated RMC's repository.
#include "ipmiTestRig.h"

#include "ipmi/zuvIPMIExceptions.h"
#include "ipmi/zuvSDRRepositoryCache.h"

#include <cstring>

using ipmitest::IpmiTest;
using ipmitest::le16;
using Step = zuvsim::SimulatedRmcDevice::Step;
using zuvIPMI::GENERIC_SDR;
using zuvIPMI::SDRRepositoryCache;

namespace {

std::vector<uint8_t> bodyOf(size_t length, uint8_t seed) {
    std::vector<uint8_t> body(length);
    for (size_t i = 0; i < length; ++i) body[i] = static_cast<uint8_t>(seed * 31 + i + 1);
    return body;
}

// The record as the cache must hold it: the RMC's bytes, cut or zero-filled to 255.
std::vector<uint8_t> asCached(std::vector<uint8_t> bytes) {
    bytes.resize(sizeof(GENERIC_SDR), 0);
    return bytes;
}

std::vector<std::vector<uint8_t>> cachedRecords(SDRRepositoryCache& cache) {
    std::vector<std::vector<uint8_t>> all;
    for (auto it = cache.begin(); it != cache.end(); ++it) all.emplace_back(it->bytes, it->bytes + sizeof it->bytes);
    return all;
}

std::vector<std::vector<uint8_t>> expectedRecords(const zuvsim::SimulatedRmc& rmc, size_t count) {
    std::vector<std::vector<uint8_t>> all;
    for (size_t i = 0; i < count; ++i) all.push_back(asCached(rmc.sdrRecord(i)));
    return all;
}

struct SdrRead {
    uint16_t reservation, recordId;
    uint8_t offset, bytes;
    bool operator==(const SdrRead& o) const {
        return reservation == o.reservation && recordId == o.recordId && offset == o.offset && bytes == o.bytes;
    }
};

std::ostream& operator<<(std::ostream& out, const SdrRead& r) {
    return out << "{res " << r.reservation << " id " << r.recordId << " @" << int(r.offset) << " n" << int(r.bytes)
               << "}";
}

std::vector<SdrRead> sdrReads(const zuvsim::SimulatedRmc& rmc) {
    std::vector<SdrRead> reads;
    for (const auto& request : rmc.requests())
        if (request.netFn == 0x0A && request.cmd == 0x23)
            reads.push_back({le16(request.data, 0), le16(request.data, 2), request.data[4], request.data[5]});
    return reads;
}

size_t readsFor(size_t length) { return 1 + (length + 15) / 16; }

}  // namespace

TEST_F(IpmiTest, CacheHoldsRecordsOfEveryLengthAfterTheExpectedReads) {
    struct Case {
        const char* name;
        std::vector<size_t> lengths;
        std::vector<std::vector<uint8_t>> firstRecordReads;  // {offset, bytes} per Get SDR
    };
    const std::vector<Case> cases = {
        {"length 0", {0}, {{0, 5}}},
        {"length 16", {16}, {{0, 5}, {5, 16}}},
        {"length 17", {17}, {{0, 5}, {5, 16}, {21, 1}}},
        {"length 250", {250}, {}},
        {"mixed", {0, 1, 15, 16, 17, 31, 32, 33, 100, 249, 250, 7}, {{0, 5}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        zuvsim::SimulatedRmc repository;
        zuvsim::SimulatedRmcDevice repositoryDevice(repository);
        zuvIPMI::setDeviceSystem(&repositoryDevice);
        for (size_t i = 0; i < c.lengths.size(); ++i)
            repository.addSdr(static_cast<uint8_t>(i + 1), bodyOf(c.lengths[i], static_cast<uint8_t>(i)));
        zuvIPMIService service(64);
        SDRRepositoryCache cache(&service);
        log.mark();

        EXPECT_EQ(cachedRecords(cache), expectedRecords(repository, c.lengths.size()));
        size_t expectedReads = 0;
        for (size_t length : c.lengths) expectedReads += readsFor(length);
        const auto reads = sdrReads(repository);
        EXPECT_EQ(reads.size(), expectedReads);
        EXPECT_EQ(repository.countOf(0x0A, 0x20), 1u);
        EXPECT_EQ(repository.countOf(0x0A, 0x22), 1u);
        EXPECT_EQ(reads.front().recordId, 0) << "the first record is asked for as 0";
        for (size_t i = 0; i < c.firstRecordReads.size(); ++i) {
            EXPECT_EQ(reads[i].offset, c.firstRecordReads[i][0]);
            EXPECT_EQ(reads[i].bytes, c.firstRecordReads[i][1]);
        }
        for (const auto& read : reads) EXPECT_EQ(read.reservation, 1);
        EXPECT_TRUE(log.has("DEBUG", "Completed reading all SDRs in the repository."));
        EXPECT_TRUE(log.has("DEBUG", "Total SDR record count: [" + std::to_string(c.lengths.size()) + "]"));
        EXPECT_TRUE(log.has("DEBUG", "SDR Version: [0x51]"));
        EXPECT_TRUE(log.has("DEBUG", "Reservation ID: [0x0001]"));

        // All eight iterator operations see the same records, and the channel is not used again.
        const SDRRepositoryCache& constCache = cache;
        EXPECT_EQ(static_cast<size_t>(constCache.end() - constCache.begin()), c.lengths.size());
        EXPECT_EQ(static_cast<size_t>(cache.rend() - cache.rbegin()), c.lengths.size());
        EXPECT_EQ(static_cast<size_t>(constCache.rend() - constCache.rbegin()), c.lengths.size());
        EXPECT_EQ(std::memcmp(cache.rbegin()->bytes, (cache.end() - 1)->bytes, 255), 0);
        EXPECT_EQ(std::memcmp(constCache.rbegin()->bytes, (constCache.end() - 1)->bytes, 255), 0);
        EXPECT_EQ(repository.requests().size(), expectedReads + 2);
        zuvIPMI::setDeviceSystem(&device);
    }
}

TEST_F(IpmiTest, EmptyRepositoryTakesNoReservation) {
    auto service = makeService();
    SDRRepositoryCache cache(service.get());
    EXPECT_EQ(cache.begin(), cache.end());
    EXPECT_EQ(rmc.requests().size(), 1u);
    EXPECT_EQ(rmc.countOf(0x0A, 0x20), 1u);
    EXPECT_TRUE(log.has("DEBUG", "Completed reading all SDRs in the repository."));
}

TEST_F(IpmiTest, LoadEndsAtTheEndMarkOrTheRecordCount) {
    struct Case {
        const char* name;
        int reportedCount;
        uint16_t lastNext;
        size_t loaded;
    };
    const std::vector<Case> cases = {
        {"count and end mark agree", -1, 0xFFFF, 5},
        {"end mark before the count", 9, 0xFFFF, 5},
        {"count before the end mark", 3, 0xFFFF, 3},
        {"count reached, no end mark", -1, 0x0010, 5},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        zuvsim::SimulatedRmc repository;
        zuvsim::SimulatedRmcDevice repositoryDevice(repository);
        zuvIPMI::setDeviceSystem(&repositoryDevice);
        for (uint8_t i = 0; i < 5; ++i) repository.addSdr(0x01, bodyOf(20, i));
        if (c.reportedCount >= 0) repository.overrideRecordCount(static_cast<uint16_t>(c.reportedCount));
        repository.setLastNextRecordId(c.lastNext);
        zuvIPMIService service(64);
        SDRRepositoryCache cache(&service);
        EXPECT_EQ(cachedRecords(cache), expectedRecords(repository, c.loaded));
        EXPECT_EQ(sdrReads(repository).size(), c.loaded * readsFor(20));
        zuvIPMI::setDeviceSystem(&device);
    }
}

TEST_F(IpmiTest, CancelledReservationRereadsTheRecordFromItsStart) {
    for (uint8_t i = 0; i < 10; ++i) rmc.addSdr(0x02, bodyOf(40, i));
    rmc.cancelReservationAt(6, 21);
    auto service = makeService();
    SDRRepositoryCache cache(service.get());
    EXPECT_EQ(cachedRecords(cache), expectedRecords(rmc, 10));

    const uint16_t seventh = ipmitest::le16(rmc.sdrRecord(6), 0);
    char line[128];
    std::snprintf(line, sizeof line,
                  "Reservation cancelled/invalidated when reading SDR [6] @ [0x%04x]! Retrying reservation.", seventh);
    EXPECT_TRUE(log.has("DEBUG", line)) << line;
    std::snprintf(line, sizeof line,
                  "Failed to retrieve SDR [0x%04x] @ offset [0x15]: (IPMI command failed with: [197])!", seventh);
    EXPECT_TRUE(log.has("DEBUG", line)) << line;
    EXPECT_TRUE(log.has("DEBUG", "Reservation ID: [0x0002]"));
    EXPECT_EQ(rmc.countOf(0x0A, 0x22), 2u);

    // The seventh record is read again from offset 0 under the new reservation.
    const auto reads = sdrReads(rmc);
    const std::vector<SdrRead> around = {{1, seventh, 0, 5}, {1, seventh, 5, 16}, {1, seventh, 21, 16},
                                         {2, seventh, 0, 5}, {2, seventh, 5, 16}, {2, seventh, 21, 16},
                                         {2, seventh, 37, 8}};
    const size_t first = 6 * readsFor(40);
    ASSERT_GE(reads.size(), first + around.size());
    EXPECT_EQ(std::vector<SdrRead>(reads.begin() + first, reads.begin() + first + around.size()), around);
    EXPECT_EQ(reads.size(), 10 * readsFor(40) + 3);
}

TEST_F(IpmiTest, ReservationCancelledOnEveryRecordStillLoadsThemAll) {
    const std::vector<size_t> lengths = {3, 16, 40, 5, 250, 17, 90, 1};
    for (size_t i = 0; i < lengths.size(); ++i) {
        rmc.addSdr(0x01, bodyOf(lengths[i], static_cast<uint8_t>(i)));
        rmc.cancelReservationAt(i, i % 2 == 0 ? 0 : 5);
    }
    auto service = makeService();
    SDRRepositoryCache cache(service.get());
    EXPECT_EQ(cachedRecords(cache), expectedRecords(rmc, lengths.size()));
    EXPECT_EQ(rmc.countOf(0x0A, 0x22), lengths.size() + 1);
}

TEST_F(IpmiTest, FailuresLeaveAFinalPartialCache) {
    struct Case {
        const char* name;
        std::function<void(zuvsim::SimulatedRmc&)> script;
        size_t loaded;
        std::vector<std::string> lines;
    };
    const std::vector<Case> cases = {
        {"info refused",
         [](zuvsim::SimulatedRmc& r) {
             r.pushResponse(0x0A, 0x20, {0xC1, {}});
         },
         0,
         {"Failed to build SDR Repository cache: (IPMI command failed with: [193])!"}},
        {"info short",
         [](zuvsim::SimulatedRmc& r) {
             r.pushResponse(0x0A, 0x20, {0x00, {0x51, 6}});
         },
         0,
         {"Failed to build SDR Repository cache: (Incorrect response data size for Get SDR Repository Info!)!"}},
        {"reservation refused",
         [](zuvsim::SimulatedRmc& r) {
             r.pushResponse(0x0A, 0x22, {0xC1, {}});
         },
         0,
         {"Failed to build SDR Repository cache: (IPMI command failed with: [193])!"}},
        {"second reservation refused",
         [](zuvsim::SimulatedRmc& r) {
             r.cancelReservationAt(3, 5);
             r.pushLogicAnswer(0x0A, 0x22);
             r.pushResponse(0x0A, 0x22, {0x00, {}});
         },
         3,
         {"Failed to build SDR Repository cache: (Incorrect response data size for Reserve SDR Repository!)!"}},
        {"record not present",
         [](zuvsim::SimulatedRmc& r) { r.failGetSdrAt(4, 21, 0xCB); },
         4,
         {"Failed to retrieve SDR [0x002c] @ offset [0x15]: (IPMI command failed with: [203])!",
          "Failed to retrieve SDR [0x002c]: (IPMI command failed with: [203])!"}},
        {"answer without the next record id",
         [](zuvsim::SimulatedRmc& r) {
             for (int i = 0; i < 2 * 3; ++i) r.pushLogicAnswer(0x0A, 0x23);
             r.pushResponse(0x0A, 0x23, {0x00, {0x17}});
         },
         2,
         {"Failed to retrieve SDR [0x001e] @ offset [0x00]: (Incorrect response data size for Get SDR!)!",
          "Failed to retrieve SDR [0x001e]: (Incorrect response data size for Get SDR!)!"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        zuvsim::SimulatedRmc repository;
        zuvsim::SimulatedRmcDevice repositoryDevice(repository);
        zuvIPMI::setDeviceSystem(&repositoryDevice);
        for (uint8_t i = 0; i < 6; ++i) repository.addSdr(0x01, bodyOf(30, i));
        c.script(repository);
        zuvIPMIService service(64);
        SDRRepositoryCache cache(&service);
        log.mark();
        EXPECT_EQ(cachedRecords(cache), expectedRecords(repository, c.loaded));
        for (const std::string& line : c.lines) EXPECT_TRUE(log.has("DEBUG", line)) << line;
        EXPECT_FALSE(log.has("DEBUG", "Completed reading all SDRs in the repository."));
        EXPECT_TRUE(log.messages("ERROR").empty());
        // Partial is final: the iterators never touch the channel again.
        const size_t traffic = repository.requests().size();
        EXPECT_EQ(cachedRecords(cache).size(), c.loaded);
        EXPECT_EQ(repository.requests().size(), traffic);
        zuvIPMI::setDeviceSystem(&device);
    }
}

TEST_F(IpmiTest, ChannelFailureLeavesTheCacheUnloadedAndTheNextCallLoadsAgain) {
    for (uint8_t i = 0; i < 4; ++i) rmc.addSdr(0x01, bodyOf(33, i));
    auto service = makeService();
    SDRRepositoryCache cache(service.get());
    device.failNext(Step::Receive, 1, 8);  // the third read of the second record
    EXPECT_THROW(cache.begin(), std::exception);
    EXPECT_EQ(rmc.countOf(0x0A, 0x20), 1u);

    EXPECT_EQ(cachedRecords(cache), expectedRecords(rmc, 4)) << "no record twice, none missing";
    EXPECT_EQ(rmc.countOf(0x0A, 0x20), 2u);
    EXPECT_EQ(rmc.countOf(0x0A, 0x22), 2u);
}

TEST_F(IpmiTest, RecordLongerThanTheCacheRecordIsCutWithoutOverrun) {
    // Length byte 255: 5 + 255 bytes at the RMC, of which the first 255 fit.
    std::vector<uint8_t> raw = {0, 0, 0x51, 0xC0, 255};
    const std::vector<uint8_t> body = bodyOf(255, 9);
    raw.insert(raw.end(), body.begin(), body.end());
    rmc.addSdr(0x01, bodyOf(10, 1));
    rmc.addRawSdr(raw);
    rmc.addSdr(0x01, bodyOf(20, 2));
    auto service = makeService();
    SDRRepositoryCache cache(service.get());
    const auto records = cachedRecords(cache);
    ASSERT_EQ(records.size(), 3u);
    std::vector<uint8_t> cut = rmc.sdrRecord(1);
    cut.resize(255);
    EXPECT_EQ(records[1], cut);
    EXPECT_EQ(records[2], asCached(rmc.sdrRecord(2))) << "the next record is read as usual";
    // The reads of the long record stop when the 255 bytes are full.
    const uint16_t longId = le16(rmc.sdrRecord(1), 0);
    std::vector<SdrRead> longReads;
    for (const SdrRead& read : sdrReads(rmc))
        if (read.recordId == longId) longReads.push_back(read);
    ASSERT_EQ(longReads.size(), 17u);
    EXPECT_EQ(longReads.back().offset, 245);
    EXPECT_EQ(longReads.back().bytes, 15);
}

TEST_F(IpmiTest, CacheSingletonKeepsTheServiceOfItsFirstCall) {
    auto service = makeService();
    SDRRepositoryCache* first = SDRRepositoryCache::getInstance(service.get());
    EXPECT_EQ(SDRRepositoryCache::getInstance(nullptr), first);
    EXPECT_TRUE(rmc.requests().empty()) << "construction does no IPMI traffic";
}
