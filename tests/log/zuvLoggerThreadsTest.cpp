// Many threads on one logger: whole lines, one number per thread, none reused. A process of its
// own, so that the logger is built here, before any thread, with a file destination.
#include "log/zuvLogger.h"

#include "zuvSandbox.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

const char* const kLog = "/opt/kelzuv/log/threads.log";
const int kThreads = 4;
const int kLinesEach = 200;

TEST(LoggerThreads, LinesFromManyThreadsNeverMix) {
    zuvtest::writeConfig(std::string(R"({"ZUVLogLocation":")") + kLog +
                         R"(","DebugLogLocation":"terminal","LoggingLevel":"Info","a":1})");
    ZUV_LOG_INFO("P_DISPATCH_Q", "main first");  // builds the logger before the threads start
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < kLinesEach; ++i) ZUV_LOG_WARNING("P_DISPATCH_Q", "worker %d line %d", t, i);
        });
    }
    for (auto& thread : threads) thread.join();
    ZUV_LOG_INFO("P_DISPATCH_Q", "main last");

    std::istringstream in(zuvtest::readFile(kLog));
    std::string line;
    std::vector<std::string> lines;
    while (std::getline(in, line)) lines.push_back(line);
    ASSERT_EQ(lines.size(), static_cast<size_t>(kThreads * kLinesEach + 2));

    // "<time> [WARNING] <number> <line> P_DISPATCH_Q: worker <t> line <i>": each worker keeps one
    // number, its lines come in its own order, and no two workers share a number.
    std::map<int, int> numberOfWorker;
    std::map<int, int> nextLineOfWorker;
    for (size_t n = 1; n + 1 < lines.size(); ++n) {
        std::istringstream words(lines[n]);
        std::string stamp, level, lineNumber, tag, workerWord, lineWord;
        int number = 0, worker = -1, index = -1;
        words >> stamp >> level >> number >> lineNumber >> tag >> workerWord >> worker >> lineWord >> index;
        ASSERT_EQ(level, "[WARNING]") << lines[n];
        ASSERT_EQ(tag, "P_DISPATCH_Q:") << lines[n];
        ASSERT_TRUE(words.eof()) << lines[n];
        ASSERT_TRUE(worker >= 0 && worker < kThreads) << lines[n];
        if (numberOfWorker.count(worker) == 0) numberOfWorker[worker] = number;
        EXPECT_EQ(numberOfWorker[worker], number) << lines[n];
        EXPECT_EQ(nextLineOfWorker[worker]++, index) << lines[n];
    }
    std::set<int> numbers;
    for (const auto& entry : numberOfWorker) numbers.insert(entry.second);
    EXPECT_EQ(numbers, (std::set<int>{101, 102, 103, 104}));
    EXPECT_NE(lines.front().find(" [INFO]    100 "), std::string::npos) << lines.front();
    EXPECT_NE(lines.back().find(" [INFO]    100 "), std::string::npos) << lines.back();
}

}  // namespace
