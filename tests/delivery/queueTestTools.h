#pragma once
// Synchronisation helpers for the queue tests: no sleeps, every wait has a condition.

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace deliverytest {

// A door that tasks wait at until the test opens it.
class Gate {
public:
    void open() {
        std::lock_guard<std::mutex> lock(mutex);
        isOpen = true;
        changed.notify_all();
    }
    void wait() {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [this] { return isOpen; });
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    bool isOpen = false;
};

// Numbers in the order the tasks recorded them.
class Recorder {
public:
    void record(int value) {
        std::lock_guard<std::mutex> lock(mutex);
        values.push_back(value);
        changed.notify_all();
    }
    std::vector<int> waitFor(size_t count) {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [&] { return values.size() >= count; });
        return values;
    }
    std::vector<int> snapshot() {
        std::lock_guard<std::mutex> lock(mutex);
        return values;
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<int> values;
};

// Polls a condition that another thread makes true, yielding between looks.
template <typename Condition>
void waitUntil(Condition condition) {
    while (!condition()) std::this_thread::yield();
}

}  // namespace deliverytest
