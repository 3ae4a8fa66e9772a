// Two threads that ask the cache for its records at the same moment cause one load and both see
// all of it; a doorbell poll on a third thread runs between the load's transactions.
#include "ipmiTestRig.h"

#include "ipmi/zuvSDRRepositoryCache.h"

#include <atomic>
#include <thread>

using ipmitest::IpmiTest;

TEST_F(IpmiTest, ConcurrentFirstCallsShareOneLoad) {
    for (uint8_t i = 0; i < 30; ++i) rmc.addSdr(0x01, std::vector<uint8_t>(i * 7 % 60, i));
    rmc.setDoorBell(0x82, {1, 0, 0, 0, 0});
    auto service = makeService();
    zuvIPMI::SDRRepositoryCache cache(service.get());

    std::atomic<int> waiting{3};
    auto startTogether = [&] {
        --waiting;
        while (waiting.load() > 0) std::this_thread::yield();
    };
    size_t seen[2] = {0, 0};
    const zuvIPMI::GENERIC_SDR* firstRecord[2] = {nullptr, nullptr};
    std::vector<std::thread> readers;
    for (int t = 0; t < 2; ++t) {
        readers.emplace_back([&, t] {
            startTogether();
            auto begin = cache.begin();
            seen[t] = static_cast<size_t>(cache.end() - begin);
            firstRecord[t] = &*begin;
        });
    }
    int polls = 0;
    std::thread poller([&] {
        startTogether();
        for (int i = 0; i < 20; ++i) polls += service->checkDoorBell(DoorBellTelemetry) == 1 ? 1 : 0;
    });
    for (auto& reader : readers) reader.join();
    poller.join();

    EXPECT_EQ(seen[0], 30u);
    EXPECT_EQ(seen[1], 30u);
    EXPECT_EQ(firstRecord[0], firstRecord[1]);
    EXPECT_EQ(rmc.countOf(0x0A, 0x20), 1u) << "one load";
    EXPECT_EQ(rmc.countOf(0x0A, 0x22), 1u);
    EXPECT_EQ(polls, 20) << "every poll got its own answer";
    for (size_t i = 0; i < 30; ++i) {
        auto expected = rmc.sdrRecord(i);
        expected.resize(255);
        EXPECT_EQ(std::vector<uint8_t>((cache.begin() + static_cast<long>(i))->bytes,
                                       (cache.begin() + static_cast<long>(i))->bytes + 255),
                  expected);
    }
}
