// zuvPriorityDispatcherQueue on its own: order by priority and of equal priorities (the heap's sift
// rules) with the log of each step, and a failed worker start. Cleanup and destruction are tested
// through the manager, which owns a queue.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "delivery/zuvPriorityDispatcherQueue.h"
#include "deliveryTestRig.h"
#include "zuvChild.h"

using namespace deliverytest;

TEST(DispatcherQueue, TasksRunByPriorityAndEqualPrioritiesInHeapOrder) {
    rig();
    const std::pair<std::vector<int>, std::vector<int>> cases[] = {
        {{0, 1, 3, 2, 3}, {0, 3, 5, 4, 2, 1}},
        {{5, 5, 5}, {0, 1, 2, 3}},
        {{5, 5, 5, 5}, {0, 1, 3, 2, 4}},
        {{5, 5, 5, 5, 5}, {0, 1, 3, 5, 2, 4}},
        {{5, 5, 5, 5, 5, 5}, {0, 1, 3, 6, 5, 2, 4}},
        {{5, 5, 5, 5, 5, 5, 5, 5, 5}, {0, 1, 3, 7, 9, 6, 8, 5, 2, 4}},
        {{-1, 0, -7, 2}, {0, 4, 2, 1, 3}},
        {{2, 0, 2, 1, 0, 2, 1, 1, 0, 2}, {0, 1, 3, 6, 10, 7, 4, 8, 5, 9, 2}}};
    for (const auto& [priorities, expected] : cases) {
        zuvtest::clearLogs();
        Recorder ran;
        zuvPriorityDispatcherQueue queue("order", 1);
        queue.dispatch([&] { ran.hold(0); }, 9);  // holds the worker until all are queued behind it
        ran.waitFor(1);
        for (size_t i = 0; i < priorities.size(); ++i)
            queue.dispatch([&, i] { ran.record(int(i) + 1); }, priorities[i]);
        ran.open();
        EXPECT_EQ(ran.waitFor(expected.size()), expected) << ::testing::PrintToString(priorities);
    }
    // The last run's debug lines: 11 tasks added, the first one popped with none left, then sizes count down.
    const Strings log = zuvtest::logMessages(zuvtest::kDebugLog, "P_DISPATCH_Q");
    ASSERT_GE(log.size(), 16u);
    EXPECT_EQ(zuvtest::countMessage(log, "Added to queue and notified"), 11u);
    EXPECT_EQ(log[1], "Popped a task from queue. Size: 0");
    EXPECT_EQ(Strings(log.begin() + 12, log.begin() + 16),
              (Strings{"Task execution completed. Size: 10", "Popped a task from queue. Size: 9",
                       "Task execution completed. Size: 9", "Popped a task from queue. Size: 8"}));
}

TEST(DispatcherQueue, FailedWorkerStartStopsTheStartedWorkersAndThrows) {
    rig();
    // In a child whose user may run two tasks, the first worker starts and the second can't.
    const zuvtest::ChildResult child = zuvtest::inChild([] {
        const uid_t user = 100000 + getpid();
        const rlimit two{2, 2};
        if (setresuid(user, user, user) != 0 || setrlimit(RLIMIT_NPROC, &two) != 0) return std::string("no setup");
        return failureOf([] { zuvPriorityDispatcherQueue("half started", 3); });
    });
    EXPECT_EQ(child.text + ", exit " + std::to_string(child.exitStatus), "Resource temporarily unavailable, exit 0");
}
