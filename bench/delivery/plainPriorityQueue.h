#pragma once
// The baseline of the dispatch benchmarks: a mutex around std::priority_queue, one worker
// thread, no logging.

#include <condition_variable>
#include <functional>
#include <mutex>
#include <queue>
#include <thread>
#include <utility>
#include <vector>

class PlainPriorityQueue {
public:
    PlainPriorityQueue() : worker([this] { run(); }) {}
    ~PlainPriorityQueue() {
        {
            std::lock_guard<std::mutex> lock(mutex);
            stopping = true;
        }
        condition.notify_all();
        worker.join();
    }
    void dispatch(const std::function<void()>& task, int priority) {
        std::lock_guard<std::mutex> lock(mutex);
        tasks.push(Entry{priority, task});
        condition.notify_one();
    }

private:
    struct Entry {
        int priority;
        std::function<void()> task;
        bool operator<(const Entry& other) const { return priority < other.priority; }
    };

    void run() {
        std::unique_lock<std::mutex> lock(mutex);
        for (;;) {
            condition.wait(lock, [this] { return stopping || !tasks.empty(); });
            if (stopping) return;
            std::function<void()> task = std::move(const_cast<Entry&>(tasks.top()).task);
            tasks.pop();
            lock.unlock();
            task();
            lock.lock();
        }
    }

    std::mutex mutex;
    std::condition_variable condition;
    std::priority_queue<Entry> tasks;
    bool stopping = false;
    std::thread worker;
};
