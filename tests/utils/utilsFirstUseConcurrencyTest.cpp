// Several threads reach the once-compiled expressions for the first time together.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "platform/zuvPlatformCode.h"
#include "utils/zuvStringUtils.h"
#include "utils/zuvUtils.h"
#include "zuvTestLog.h"

TEST(UtilsFirstUse, DecoderAndPciExpressionAreCompiledOnceUnderConcurrentFirstCalls) {
    zuvtest::startFileLogging();  // the logger is built before any thread starts
    storeCachedPlatformCode(2);
    zuvUtils::geoIdLocationMap = {{"0000:01:00.0", "r001u02p3i04"}, {"0000:02:00.0", "r123u45p6i78"}};
    std::atomic<int> waiting{8};
    std::vector<std::string> results(8);
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&, i] {
            waiting.fetch_sub(1);
            while (waiting.load() > 0) std::this_thread::yield();  // the first calls overlap
            for (const std::string& part : zuvUtils().decodeGeoId(i % 2 ? "0000:01:00.0" : "0000:02:00.0"))
                results[i] += part + ",";
            for (const std::string& part : zuvStringUtils::findPciAddresses("at 0000:03:00.0, 0000:04:00.1"))
                results[i] += part + ",";
        });
    }
    for (std::thread& t : threads) t.join();
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(results[i], std::string(i % 2 ? "001,02,3,04," : "123,45,6,78,") + "0000:03:00.0,0000:04:00.1,") << i;
}
