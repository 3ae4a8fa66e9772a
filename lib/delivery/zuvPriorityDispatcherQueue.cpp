#include "delivery/zuvPriorityDispatcherQueue.h"

#include <system_error>
#include <utility>

#include "delivery/zuvTaskHeap.h"
#include "log/zuvLogger.h"

#define QUEUE_TAG "P_DISPATCH_Q"

zuvPriorityDispatcherQueue::zuvPriorityDispatcherQueue(std::string queueName, std::size_t threadCount)
    : name(std::move(queueName)) {
    ZUV_LOG_INFO(QUEUE_TAG, "Creating dispatch queue: %s", name.c_str());
    ZUV_LOG_INFO(QUEUE_TAG, "Dispatch threads: %zu", threadCount);
    threads.resize(threadCount);
    try {
        for (std::thread& thread : threads) thread = std::thread(&zuvPriorityDispatcherQueue::workerLoop, this);
    } catch (...) {
        // Workers already started must not outlive the object that is not built.
        {
            std::lock_guard<std::mutex> lock(mutex);
            stopRequested = true;
            condition.notify_all();
        }
        for (std::thread& thread : threads) {
            if (thread.joinable()) thread.join();
        }
        throw;
    }
}

zuvPriorityDispatcherQueue::~zuvPriorityDispatcherQueue() {
    ZUV_LOG_INFO(QUEUE_TAG, "Destructor: Destroying dispatch threads...");
    {
        std::lock_guard<std::mutex> lock(mutex);
        stopRequested = true;
        condition.notify_all();
    }
    for (std::size_t i = 0; i < threads.size(); ++i) {
        if (threads[i].joinable()) {
            ZUV_LOG_INFO(QUEUE_TAG, "Destructor: Joining thread %zu until completion", i);
            threads[i].join();
        }
    }
}

void zuvPriorityDispatcherQueue::dispatch(const std::function<void()>& task, int priority) {
    std::lock_guard<std::mutex> lock(mutex);
    zuvTaskHeap::push(tasks, TaskRecord{task, priority});
    queuedCount = tasks.size();
    condition.notify_one();
    ZUV_LOG_DEBUG(QUEUE_TAG, "Added to queue and notified");
}

void zuvPriorityDispatcherQueue::workerLoop() {
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
        while (tasks.empty()) {
            if (stopRequested) return;
            condition.wait(lock);
        }
        if (stopRequested) return;
        TaskRecord record = zuvTaskHeap::pop(tasks);
        queuedCount = tasks.size();
        ZUV_LOG_DEBUG(QUEUE_TAG, "Popped a task from queue. Size: %zu", tasks.size());
        lock.unlock();

        record.task();
        ZUV_LOG_DEBUG(QUEUE_TAG, "Task execution completed. Size: %zu", queuedCount.load());

        lock.lock();
        record.task = nullptr;  // the task's captures die under the lock
        if (stopRequested) return;
    }
}

void zuvPriorityDispatcherQueue::cleanup() {
    ZUV_LOG_INFO(QUEUE_TAG, "Cleanup_Received: QSize [%zu]", queuedCount.load());
    std::lock_guard<std::mutex> lock(mutex);
    while (!tasks.empty()) zuvTaskHeap::pop(tasks);
    queuedCount = 0;
    ZUV_LOG_INFO(QUEUE_TAG, "Q Cleaned_up: QSize [%zu]", tasks.size());
}

bool zuvPriorityDispatcherQueue::empty() {
    std::lock_guard<std::mutex> lock(mutex);
    return tasks.empty();
}

void zuvPriorityDispatcherQueue::stop() {
    std::lock_guard<std::mutex> lock(mutex);
    stopRequested = true;
}
