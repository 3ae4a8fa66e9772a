// zuvPriorityDispatcherQueue: order by priority, the order of equal priorities, tasks run
// without the lock, cleanup, stop and destruction, and the log lines.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <random>

#include "delivery/zuvPriorityDispatcherQueue.h"
#include "delivery/zuvTaskHeap.h"
#include "deliveryTestLog.h"
#include "queueTestTools.h"

using deliverytest::Gate;
using deliverytest::Recorder;

namespace {

class DispatcherQueueTest : public ::testing::Test {
protected:
    void SetUp() override {
        deliverytest::startLogging();
        deliverytest::clearLogs();
    }
};

// Runs the priorities with the one worker held busy until all are queued; returns the
// arrival numbers (1-based) in the order the tasks ran.
std::vector<int> runOrder(const std::vector<int>& priorities) {
    zuvPriorityDispatcherQueue queue("order", 1);
    Gate gate;
    Recorder started;
    Recorder ran;
    queue.dispatch(
        [&] {
            started.record(0);
            gate.wait();
        },
        100);
    started.waitFor(1);
    for (size_t i = 0; i < priorities.size(); ++i) {
        int number = int(i) + 1;
        queue.dispatch([&ran, number] { ran.record(number); }, priorities[i]);
    }
    gate.open();
    return ran.waitFor(priorities.size());
}

struct Item {
    int priority;
    int number;
};

}  // namespace

TEST(TaskHeap, OrdersLikeTheStandardHeapForAnyMixOfPushesAndPops) {
    std::mt19937 random(7);
    auto less = [](const Item& a, const Item& b) { return a.priority < b.priority; };
    for (int round = 0; round < 200; ++round) {
        std::vector<Item> ours;
        std::vector<Item> reference;
        int number = 0;
        for (int step = 0; step < 60; ++step) {
            if (ours.empty() || random() % 3 != 0) {
                Item item{int(random() % 4) - 1, ++number};
                zuvTaskHeap::push(ours, item);
                reference.push_back(item);
                std::push_heap(reference.begin(), reference.end(), less);
            } else {
                Item mine = zuvTaskHeap::pop(ours);
                std::pop_heap(reference.begin(), reference.end(), less);
                Item theirs = reference.back();
                reference.pop_back();
                ASSERT_EQ(mine.number, theirs.number) << "round " << round << " step " << step;
            }
        }
    }
}

TEST_F(DispatcherQueueTest, TasksRunByPriorityAndEqualPrioritiesInHeapOrder) {
    struct Case {
        std::vector<int> priorities;
        std::vector<int> expected;
    } cases[] = {
        {{0, 1, 3, 2, 3}, {3, 5, 4, 2, 1}}, {{5, 5, 5}, {1, 2, 3}},         {{5, 5, 5, 5}, {1, 3, 2, 4}},
        {{5, 5, 5, 5, 5}, {1, 3, 5, 2, 4}}, {{-1, 0, -7, 2}, {4, 2, 1, 3}}, {{0, 1, 2, 3}, {4, 3, 2, 1}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.priorities));
        EXPECT_EQ(runOrder(c.priorities), c.expected);
    }
}

TEST_F(DispatcherQueueTest, TaskMayDispatchToItsOwnQueue) {
    zuvPriorityDispatcherQueue queue("nested", 1);
    Recorder ran;
    queue.dispatch(
        [&] {
            ran.record(1);
            queue.dispatch([&] { ran.record(2); }, 0);
            ran.record(3);  // still running: the worker holds no lock
        },
        0);
    EXPECT_EQ(ran.waitFor(3), (std::vector<int>{1, 3, 2}));
}

TEST_F(DispatcherQueueTest, CleanupDropsQueuedTasksButNotTheRunningOne) {
    zuvPriorityDispatcherQueue queue("cleanup", 1);
    queue.cleanup();
    EXPECT_EQ(deliverytest::messages(deliverytest::kMainLog, "P_DISPATCH_Q"),
              (std::vector<std::string>{"Creating dispatch queue: cleanup", "Dispatch threads: 1",
                                        "Cleanup_Received: QSize [0]", "Q Cleaned_up: QSize [0]"}));
    EXPECT_TRUE(queue.empty());

    Gate gate;
    Recorder ran;
    auto captured = std::make_shared<int>(0);
    queue.dispatch(
        [&] {
            ran.record(1);
            gate.wait();
            ran.record(2);
        },
        0);
    ran.waitFor(1);
    queue.dispatch([&ran, captured] { ran.record(99); }, 5);
    queue.dispatch([&ran, captured] { ran.record(98); }, 0);
    EXPECT_FALSE(queue.empty());
    EXPECT_EQ(captured.use_count(), 3);
    deliverytest::clearLogs();
    queue.cleanup();
    EXPECT_TRUE(queue.empty());
    EXPECT_EQ(captured.use_count(), 1) << "the dropped records are destroyed";
    EXPECT_EQ(deliverytest::messages(deliverytest::kMainLog, "P_DISPATCH_Q"),
              (std::vector<std::string>{"Cleanup_Received: QSize [2]", "Q Cleaned_up: QSize [0]"}));
    gate.open();
    queue.dispatch([&] { ran.record(3); }, 0);
    EXPECT_EQ(ran.waitFor(3), (std::vector<int>{1, 2, 3}));
}

TEST_F(DispatcherQueueTest, DestructionFinishesTheRunningTaskAndDropsTheQueued) {
    auto queue = std::make_unique<zuvPriorityDispatcherQueue>("teardown", 1);
    Gate gate;
    Recorder ran;
    auto captured = std::make_shared<int>(0);
    queue->dispatch(
        [&] {
            ran.record(1);
            gate.wait();
            ran.record(2);
        },
        0);
    ran.waitFor(1);
    for (int i = 0; i < 3; ++i) queue->dispatch([&ran, captured] { ran.record(99); }, 9);

    std::thread destroyer([&] { queue.reset(); });
    deliverytest::waitUntil(
        [] { return deliverytest::logHolds(deliverytest::kMainLog, "Destructor: Joining thread 0 until completion"); });
    EXPECT_EQ(ran.snapshot(), std::vector<int>{1}) << "the destructor waits for the running task";
    gate.open();
    destroyer.join();
    EXPECT_EQ(ran.snapshot(), (std::vector<int>{1, 2}));
    EXPECT_EQ(captured.use_count(), 1);
    std::vector<std::string> lines = deliverytest::messages(deliverytest::kMainLog, "P_DISPATCH_Q");
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[lines.size() - 2], "Destructor: Destroying dispatch threads...");
    EXPECT_EQ(lines.back(), "Destructor: Joining thread 0 until completion");
}

TEST_F(DispatcherQueueTest, IdleQueuesOfAnySizeAreDestroyedPromptly) {
    for (size_t threads : {0u, 1u, 3u}) {
        SCOPED_TRACE(threads);
        deliverytest::clearLogs();
        std::atomic<int> calls{0};
        {
            zuvPriorityDispatcherQueue queue("idle", threads);
            if (threads == 0) queue.dispatch([&] { ++calls; }, 0);
        }
        EXPECT_EQ(calls.load(), 0);
        std::vector<std::string> lines = deliverytest::messages(deliverytest::kMainLog, "P_DISPATCH_Q");
        EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                                [](const std::string& l) { return l.rfind("Destructor: Joining thread", 0) == 0; }),
                  long(threads));
    }
}

TEST_F(DispatcherQueueTest, StopLetsNoFurtherTaskStart) {
    // Stopped while idle: the worker wakes at the next dispatch and leaves without running it.
    std::atomic<int> calls{0};
    {
        zuvPriorityDispatcherQueue queue("stopped idle", 1);
        queue.stop();
        queue.dispatch([&] { ++calls; }, 0);
        queue.dispatch([&] { ++calls; }, 0);
        EXPECT_FALSE(queue.empty());
    }
    EXPECT_EQ(calls.load(), 0);

    // Stopped during a task: that task ends, the queued one stays queued.
    Gate gate;
    Recorder ran;
    {
        zuvPriorityDispatcherQueue queue("stopped busy", 1);
        queue.dispatch(
            [&] {
                ran.record(1);
                gate.wait();
            },
            0);
        ran.waitFor(1);
        queue.dispatch([&] { ran.record(2); }, 0);
        queue.stop();
        gate.open();
        EXPECT_FALSE(queue.empty());
    }
    EXPECT_EQ(ran.snapshot(), std::vector<int>{1});
}

TEST_F(DispatcherQueueTest, LogLinesOfOneTask) {
    {
        zuvPriorityDispatcherQueue queue("ZUV - Test Queue", 1);
        Recorder ran;
        queue.dispatch([&] { ran.record(1); }, 0);
        ran.waitFor(1);
        deliverytest::waitUntil(
            [] { return deliverytest::logHolds(deliverytest::kDebugLog, "Task execution completed. Size: 0"); });
    }
    EXPECT_EQ(deliverytest::messages(deliverytest::kMainLog, "P_DISPATCH_Q"),
              (std::vector<std::string>{"Creating dispatch queue: ZUV - Test Queue", "Dispatch threads: 1",
                                        "Destructor: Destroying dispatch threads...",
                                        "Destructor: Joining thread 0 until completion"}));
    EXPECT_EQ(deliverytest::messages(deliverytest::kDebugLog, "P_DISPATCH_Q"),
              (std::vector<std::string>{"Added to queue and notified", "Popped a task from queue. Size: 0",
                                        "Task execution completed. Size: 0"}));
}

TEST_F(DispatcherQueueTest, ManyProducersAndWorkersRunEveryTaskOnce) {
    constexpr int kProducers = 4;
    constexpr int kTasksEach = 500;
    std::vector<std::atomic<int>> runs(kProducers * kTasksEach);
    Recorder done;
    {
        zuvPriorityDispatcherQueue queue("busy", 3);
        std::vector<std::thread> producers;
        for (int p = 0; p < kProducers; ++p) {
            producers.emplace_back([&, p] {
                for (int i = 0; i < kTasksEach; ++i) {
                    int index = p * kTasksEach + i;
                    queue.dispatch(
                        [&runs, &done, index] {
                            ++runs[size_t(index)];
                            done.record(index);
                        },
                        i % 5);
                }
            });
        }
        for (std::thread& t : producers) t.join();
        done.waitFor(runs.size());
    }
    for (size_t i = 0; i < runs.size(); ++i) ASSERT_EQ(runs[i].load(), 1) << i;
}
