// Several threads reach the once-compiled expressions for the first time together.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "platform/zuvPlatformCode.h"
#include "utils/zuvStringUtils.h"
#include "utils/zuvUtils.h"
#include "utilsTestLog.h"

TEST(UtilsFirstUse, DecoderAndPciExpressionAreCompiledOnceUnderConcurrentFirstCalls) {
    utilstest::startLogging();  // the logger is built before any thread starts
    storeCachedPlatformCode(2);
    zuvUtils::geoIdLocationMap = {{"0000:01:00.0", "r001u02p3i04"}, {"0000:02:00.0", "r123u45p6i78"}};
    ASSERT_FALSE(zuvUtils::geoIdRegexReady);

    constexpr int kThreads = 8;
    std::atomic<int> waiting{kThreads};
    std::vector<std::vector<std::string>> decoded(kThreads), found(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            // All threads start together so that the first calls overlap.
            waiting.fetch_sub(1);
            while (waiting.load() > 0) std::this_thread::yield();
            if (i % 2 == 0) {
                decoded[i] = zuvUtils().decodeGeoId(i % 4 == 0 ? "0000:01:00.0" : "0000:02:00.0");
                found[i] = zuvStringUtils::findPciAddresses("at 0000:03:00.0 and 0000:04:00.1");
            } else {
                found[i] = zuvStringUtils::findPciAddresses("at 0000:03:00.0 and 0000:04:00.1");
                decoded[i] = zuvUtils().decodeGeoId(i % 4 == 1 ? "0000:01:00.0" : "0000:02:00.0");
            }
        });
    }
    for (std::thread& t : threads) t.join();

    const std::vector<std::string> first = {"001", "02", "3", "04"}, second = {"123", "45", "6", "78"};
    for (int i = 0; i < kThreads; ++i) {
        const bool wantsFirst = i % 4 == 0 || i % 4 == 1;
        EXPECT_EQ(decoded[i], wantsFirst ? first : second) << "thread " << i;
        EXPECT_EQ(found[i], (std::vector<std::string>{"0000:03:00.0", "0000:04:00.1"})) << "thread " << i;
    }
    EXPECT_TRUE(zuvUtils::geoIdRegexReady);
}
