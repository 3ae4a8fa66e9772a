#pragma once
// A small thread pool with a priority queue in front: producers hand in a task and a
// priority and return at once; the workers run the task of highest priority, outside the
// lock. Tasks of equal priority carry no arrival order (see zuvTaskHeap.h).

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

class zuvPriorityDispatcherQueue {
public:
    // Starts threadCount workers; std::system_error if one can't be started (the ones
    // already running are stopped and joined first). With 0 workers nothing ever runs.
    zuvPriorityDispatcherQueue(std::string name, std::size_t threadCount);
    // Lets each worker finish the task it runs, joins them, drops what is still queued.
    // Must not run on a worker thread.
    ~zuvPriorityDispatcherQueue();
    zuvPriorityDispatcherQueue(const zuvPriorityDispatcherQueue&) = delete;
    zuvPriorityDispatcherQueue& operator=(const zuvPriorityDispatcherQueue&) = delete;

    // Queues a copy of task; larger priorities run first. task must not be empty. A task
    // must catch what it raises: nothing around it does.
    void dispatch(const std::function<void()>& task, int priority);
    // Drops every queued task without running it; a running task is not affected.
    void cleanup();
    bool empty();
    // Sets the stop flag only: a waiting worker leaves at its next wake-up.
    void stop();

private:
    struct TaskRecord {
        std::function<void()> task;
        int32_t priority;
    };

    void workerLoop();

    std::string name;
    std::mutex mutex;
    std::vector<std::thread> threads;
    std::vector<TaskRecord> tasks;  // max-heap by priority
    std::condition_variable condition;
    bool stopRequested = false;
    // tasks.size() as last seen under the lock, for the log lines written outside it.
    std::atomic<std::size_t> queuedCount{0};
};
