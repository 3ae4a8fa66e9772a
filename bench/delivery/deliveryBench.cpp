// Delivery benchmarks: dispatch throughput and round-trip latency of the dispatcher queue
// with one worker against a plain mutex-and-priority_queue baseline, and the cost of
// building and serialising one event JSON. Runs inside the test sandbox so that the log
// facility reads a configuration of its own (errors only, to syslog) and not the host's.
//   bench_delivery [--benchmark_filter=...]
#include <benchmark/benchmark.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <thread>
#include <vector>

#include "delivery/zuvEventPayload.h"
#include "delivery/zuvPriorityDispatcherQueue.h"
#include "log/zuvLogger.h"
#include "plainPriorityQueue.h"
#include "zuvSandbox.h"

namespace {

struct ZuvQueue {
    zuvPriorityDispatcherQueue queue{"bench", 1};
    void dispatch(const std::function<void()>& task, int priority) { queue.dispatch(task, priority); }
};

// Counts finished tasks and lets the benchmark wait for a number of them.
class Completion {
public:
    void add() {
        if (done.fetch_add(1, std::memory_order_acq_rel) + 1 == target.load(std::memory_order_acquire)) {
            std::lock_guard<std::mutex> lock(mutex);
            condition.notify_one();
        }
    }
    void expect(long count) {
        done.store(0);
        target.store(count);
    }
    void wait() {
        std::unique_lock<std::mutex> lock(mutex);
        condition.wait(lock, [this] { return done.load() >= target.load(); });
    }

private:
    std::atomic<long> done{0};
    std::atomic<long> target{0};
    std::mutex mutex;
    std::condition_variable condition;
};

// Producers each dispatch a batch of small tasks with mixed priorities; the iteration ends
// when the worker has run them all.
template <typename Queue>
void BM_DispatchThroughput(benchmark::State& state) {
    const int producers = int(state.range(0));
    const int perProducer = 20000 / producers;
    Queue queue;
    Completion completion;
    for (auto _ : state) {
        completion.expect(long(producers) * perProducer);
        std::vector<std::thread> threads;
        for (int p = 0; p < producers; ++p) {
            threads.emplace_back([&] {
                for (int i = 0; i < perProducer; ++i) queue.dispatch([&completion] { completion.add(); }, i & 3);
            });
        }
        for (std::thread& t : threads) t.join();
        completion.wait();
    }
    state.SetItemsProcessed(state.iterations() * producers * perProducer);
}

// One task at a time: from dispatch to the end of the task on the worker.
template <typename Queue>
void BM_DispatchLatency(benchmark::State& state) {
    Queue queue;
    Completion completion;
    for (auto _ : state) {
        completion.expect(1);
        queue.dispatch([&completion] { completion.add(); }, 3);
        completion.wait();
    }
}

BENCHMARK_TEMPLATE(BM_DispatchThroughput, ZuvQueue)->Arg(1)->Arg(4)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_DispatchThroughput, PlainPriorityQueue)
    ->Arg(1)
    ->Arg(4)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_DispatchLatency, ZuvQueue)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(BM_DispatchLatency, PlainPriorityQueue)->UseRealTime()->Unit(benchmark::kMicrosecond);

zuvEvent sampleEvent() {
    zuvEvent event;
    event.id = 835;
    event.eventTime = "2026-11-18T10:36:45Z";
    event.physicalLocation = "Slot 3 Port 1";
    event.source = "NVMe";
    event.variableData["Code"] = 1;
    event.variableData["Serial"] = "S4EVNF0M123456";
    event.variableData["Temperature"] = 71;
    return event;
}

zuvMsgHeader sampleHeader() { return zuvMsgHeader{"esx01.example.net", "7.0.3", 104, "192.0.2.10"}; }

void BM_EventJsonBuild(benchmark::State& state) {
    const zuvEvent event = sampleEvent();
    const zuvMsgHeader header = sampleHeader();
    for (auto _ : state) {
        Json::Value root;
        zuvPopulateEventPayload(event, header, root);
        benchmark::DoNotOptimize(root);
    }
}

void BM_EventJsonSerialise(benchmark::State& state) {
    Json::Value root;
    zuvPopulateEventPayload(sampleEvent(), sampleHeader(), root);
    for (auto _ : state) benchmark::DoNotOptimize(zuvEventToString(root));
}

void BM_EventJsonBuildAndSerialise(benchmark::State& state) {
    const zuvEvent event = sampleEvent();
    const zuvMsgHeader header = sampleHeader();
    for (auto _ : state) {
        Json::Value root;
        zuvPopulateEventPayload(event, header, root);
        benchmark::DoNotOptimize(zuvEventToString(root));
    }
}

BENCHMARK(BM_EventJsonBuild);
BENCHMARK(BM_EventJsonSerialise);
BENCHMARK(BM_EventJsonBuildAndSerialise);

}  // namespace

int main(int argc, char** argv) {
    zuvtest::enterSandbox();
    zuvtest::writeConfig(R"({"ZUVLogLocation":"syslog","DebugLogLocation":"syslog","LoggingLevel":"Error"})");
    zuvLogger::getInstance();  // before any thread
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
