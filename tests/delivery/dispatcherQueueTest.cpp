// zuvPriorityDispatcherQueue and its heap: order by priority and of equal priorities, tasks run
// without the lock, cleanup, stop, destruction, a failed worker start, and the log lines.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <random>
#include <system_error>

#include "delivery/zuvPriorityDispatcherQueue.h"
#include "delivery/zuvTaskHeap.h"
#include "deliveryTestRig.h"
#include "zuvChild.h"

using namespace deliverytest;

namespace {

std::vector<std::string> queueLog(const char* file) { return zuvtest::logMessages(file, "P_DISPATCH_Q"); }

// Queues the priorities while the one worker is held in a task; the arrival numbers (from 1)
// in the order the tasks ran.
std::vector<int> runOrder(const std::vector<int>& priorities) {
    Gate gate;
    Recorder ran;
    zuvPriorityDispatcherQueue queue("order", 1);
    queue.dispatch(
        [&] {
            ran.record(0);
            gate.wait();
        },
        100);
    ran.waitFor(1);
    for (size_t i = 0; i < priorities.size(); ++i) queue.dispatch([&ran, i] { ran.record(int(i) + 1); }, priorities[i]);
    gate.open();
    const std::vector<int> order = ran.waitFor(priorities.size() + 1);
    return {order.begin() + 1, order.end()};
}

class DispatcherQueueTest : public ::testing::Test {
protected:
    void SetUp() override {
        rig();
        zuvtest::clearLogs();
    }
};

}  // namespace

TEST(TaskHeap, PopsInTheOrderOfTheStandardHeap) {
    struct Item {
        int priority;
        int number;
    };
    auto less = [](const Item& a, const Item& b) { return a.priority < b.priority; };
    std::vector<Item> ours, theirs;
    std::minstd_rand random(7);
    for (int step = 0; step < 4000; ++step) {
        if (ours.empty() || random() % 3 != 0) {
            const Item item{int(random() % 4) - 1, step};
            zuvTaskHeap::push(ours, item);
            theirs.push_back(item);
            std::push_heap(theirs.begin(), theirs.end(), less);
        } else {
            std::pop_heap(theirs.begin(), theirs.end(), less);
            ASSERT_EQ(zuvTaskHeap::pop(ours).number, theirs.back().number) << "step " << step;
            theirs.pop_back();
        }
    }
}

TEST_F(DispatcherQueueTest, TasksRunByPriorityAndEqualPrioritiesInHeapOrder) {
    const std::pair<std::vector<int>, std::vector<int>> cases[] = {
        {{0, 1, 3, 2, 3}, {3, 5, 4, 2, 1}}, {{5, 5, 5}, {1, 2, 3}},         {{5, 5, 5, 5}, {1, 3, 2, 4}},
        {{5, 5, 5, 5, 5}, {1, 3, 5, 2, 4}}, {{-1, 0, -7, 2}, {4, 2, 1, 3}},
    };
    for (const auto& [priorities, expected] : cases) {
        zuvtest::clearLogs();
        EXPECT_EQ(runOrder(priorities), expected) << ::testing::PrintToString(priorities);
    }
    EXPECT_TRUE(zuvtest::logHolds(kDebugLog, "Popped a task from queue. Size: 3"));
}

TEST_F(DispatcherQueueTest, TaskMayDispatchToItsOwnQueue) {
    Recorder ran;
    zuvPriorityDispatcherQueue queue("nested", 1);
    queue.dispatch(
        [&] {
            ran.record(1);
            queue.dispatch([&] { ran.record(2); }, 0);
            ran.record(3);  // still running: the worker holds no lock
        },
        0);
    EXPECT_EQ(ran.waitFor(3), (std::vector<int>{1, 3, 2}));
}

TEST_F(DispatcherQueueTest, CleanupDropsTheQueuedTasksAndLogsEachStep) {
    Gate gate;
    Recorder ran;
    auto captured = std::make_shared<int>(0);
    {
        zuvPriorityDispatcherQueue queue("ZUV - Test Queue", 1);
        queue.cleanup();
        queue.dispatch(
            [&] {
                ran.record(1);
                gate.wait();
            },
            0);
        ran.waitFor(1);
        queue.dispatch([&ran, captured] { ran.record(99); }, 5);
        queue.dispatch([&ran, captured] { ran.record(98); }, 0);
        EXPECT_FALSE(queue.empty());
        queue.cleanup();
        EXPECT_TRUE(queue.empty());
        EXPECT_EQ(captured.use_count(), 1) << "the dropped records are destroyed";
        gate.open();
        waitForLog(kDebugLog, "Task execution completed");
        queue.dispatch([&] { ran.record(2); }, 0);
        EXPECT_EQ(ran.waitFor(2), (std::vector<int>{1, 2}));
        while (zuvtest::countMessage(queueLog(kDebugLog), "Task execution completed. Size: 0") < 2)
            std::this_thread::yield();
    }
    EXPECT_EQ(queueLog(kMainLog),
              (std::vector<std::string>{
                  "Creating dispatch queue: ZUV - Test Queue", "Dispatch threads: 1", "Cleanup_Received: QSize [0]",
                  "Q Cleaned_up: QSize [0]", "Cleanup_Received: QSize [2]", "Q Cleaned_up: QSize [0]",
                  "Destructor: Destroying dispatch threads...", "Destructor: Joining thread 0 until completion"}));
    const std::string added = "Added to queue and notified", popped = "Popped a task from queue. Size: 0",
                      completed = "Task execution completed. Size: 0";
    EXPECT_EQ(queueLog(kDebugLog),
              (std::vector<std::string>{added, popped, added, added, completed, added, popped, completed}));
}

TEST_F(DispatcherQueueTest, DestructionFinishesTheRunningTaskAndDropsTheQueued) {
    Gate gate;
    Recorder ran;
    auto captured = std::make_shared<int>(0);
    auto queue = std::make_unique<zuvPriorityDispatcherQueue>("teardown", 1);
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
    waitForLog(kMainLog, "Destructor: Joining thread 0 until completion");
    EXPECT_EQ(ran.waitFor(0), std::vector<int>{1}) << "the destructor waits for the running task";
    gate.open();
    destroyer.join();
    EXPECT_EQ(ran.waitFor(0), (std::vector<int>{1, 2}));
    EXPECT_EQ(captured.use_count(), 1);
}

TEST_F(DispatcherQueueTest, StoppedOrWorkerlessQueuesStartNoFurtherTask) {
    // Idle queues of any size end at once; after stop, the worker wakes at the next dispatch
    // and leaves without running it; a stop during a task lets that one end and no other.
    for (size_t threads : {0, 1, 3}) {
        zuvtest::clearLogs();
        std::atomic<int> calls{0};
        {
            zuvPriorityDispatcherQueue queue("idle", threads);
            if (threads == 1) queue.stop();
            if (threads < 2) queue.dispatch([&] { ++calls; }, 0);
        }
        EXPECT_EQ(calls.load(), 0) << threads;
        EXPECT_EQ(queueLog(kMainLog).size(), 3 + threads) << "one join line per worker";
    }
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
        waitForLog(kDebugLog, "Task execution completed. Size: 1");
        EXPECT_FALSE(queue.empty());
    }
    EXPECT_EQ(ran.waitFor(0), std::vector<int>{1});
}

TEST_F(DispatcherQueueTest, ManyProducersAndWorkersRunEveryTaskOnce) {
    std::vector<std::atomic<int>> runs(2000);
    Recorder done;
    {
        zuvPriorityDispatcherQueue queue("busy", 3);
        std::vector<std::thread> producers;
        for (size_t p = 0; p < 4; ++p) {
            producers.emplace_back([&, p] {
                for (size_t i = p; i < runs.size(); i += 4)
                    queue.dispatch([&runs, &done, i] { done.record(++runs[i]); }, int(i % 5));
            });
        }
        for (std::thread& t : producers) t.join();
        done.waitFor(runs.size());
    }
    EXPECT_EQ(std::count_if(runs.begin(), runs.end(), [](const std::atomic<int>& n) { return n == 1; }), 2000);
}

TEST_F(DispatcherQueueTest, FailedWorkerStartStopsTheStartedWorkersAndThrows) {
    // In a child whose user may run two tasks: the first worker starts, the second can't.
    const zuvtest::ChildResult child = zuvtest::inChild([] {
        const uid_t user = 100000 + getpid();
        const rlimit two{2, 2};
        if (setresuid(user, user, user) != 0 || setrlimit(RLIMIT_NPROC, &two) != 0) return std::string("setup");
        try {
            zuvPriorityDispatcherQueue queue("doomed", 3);
        } catch (const std::system_error&) {
            return std::string("system_error");
        }
        return std::string("built");
    });
    EXPECT_EQ(child.exitStatus, 0);
    EXPECT_EQ(child.text, "system_error");
}
