// zuvPriorityDispatcherQueue on its own: order by priority and of equal priorities (the heap's
// sift rules) with the log of each step, stopped and workerless queues, a failed worker start.
// Cleanup and destruction are tested through the manager that owns a queue.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "delivery/zuvPriorityDispatcherQueue.h"
#include "deliveryTestRig.h"
#include "zuvChild.h"

using namespace deliverytest;

TEST(DispatcherQueue, TasksRunByPriorityAndEqualPrioritiesInHeapOrder) {
    rig();
    const std::pair<std::vector<int>, std::vector<int>> cases[] = {
        {{0, 1, 3, 2, 3}, {3, 5, 4, 2, 1}},
        {{5, 5, 5}, {1, 2, 3}},
        {{5, 5, 5, 5}, {1, 3, 2, 4}},
        {{5, 5, 5, 5, 5}, {1, 3, 5, 2, 4}},
        {{5, 5, 5, 5, 5, 5}, {1, 3, 6, 5, 2, 4}},
        {{5, 5, 5, 5, 5, 5, 5, 5, 5}, {1, 3, 7, 9, 6, 8, 5, 2, 4}},
        {{-1, 0, -7, 2}, {4, 2, 1, 3}},
        {{2, 0, 2, 1, 0, 2, 1, 1, 0, 2}, {1, 3, 6, 10, 7, 4, 8, 5, 9, 2}}};
    for (const auto& [priorities, expected] : cases) {
        zuvtest::clearLogs();
        Recorder ran;  // the worker is held in a first task until all are queued
        zuvPriorityDispatcherQueue queue("order", 1);
        queue.dispatch(
            [&] {
                ran.record(0);
                ran.wait();
            },
            9);
        ran.waitFor(1);
        for (size_t i = 0; i < priorities.size(); ++i)
            queue.dispatch([&, i] { ran.record(int(i) + 1); }, priorities[i]);
        ran.open();
        const std::vector<int> order = ran.waitFor(priorities.size() + 1);
        EXPECT_EQ(std::vector<int>(order.begin() + 1, order.end()), expected) << ::testing::PrintToString(priorities);
    }
    // The debug lines of the last run: ten tasks queued behind the first, then counted down.
    Strings log = {"Added to queue and notified", "Popped a task from queue. Size: 0"};
    log.resize(12, log.front());
    for (int left = 10; left > 0; --left) {
        log.push_back("Task execution completed. Size: " + std::to_string(left));
        log.push_back("Popped a task from queue. Size: " + std::to_string(left - 1));
    }
    log.push_back("Task execution completed. Size: 0");
    EXPECT_EQ(zuvtest::logMessages(zuvtest::kDebugLog, "P_DISPATCH_Q"), log);
}

TEST(DispatcherQueue, StoppedWorkerlessAndHalfStartedQueuesRunNothing) {
    rig();
    for (size_t threads : {0, 1, 3}) {
        std::atomic<int> calls{0};
        {
            zuvPriorityDispatcherQueue queue("idle", threads);
            queue.stop();  // a waiting worker wakes at the next dispatch and leaves
            queue.dispatch([&] { ++calls; }, 0);
        }
        EXPECT_EQ(calls.load(), 0) << threads << " threads";
    }
    // In a child whose user may run two tasks, the first worker starts and the second can't: the
    // started one is stopped and joined before the failure leaves the constructor.
    const zuvtest::ChildResult child = zuvtest::inChild([] {
        const uid_t user = 100000 + getpid();
        const rlimit two{2, 2};
        if (setresuid(user, user, user) != 0 || setrlimit(RLIMIT_NPROC, &two) != 0) return std::string("no setup");
        return failureOf([] { zuvPriorityDispatcherQueue("half started", 3); });
    });
    EXPECT_EQ(child.text + ", exit " + std::to_string(child.exitStatus), "Resource temporarily unavailable, exit 0");
}
