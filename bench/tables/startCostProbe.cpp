// An empty program that reports what happened before its main: the heap allocations (count
// and bytes), and the wall time, CPU time and page faults from the first static constructor
// of the executable to main.
// Linked once alone and once with the tables, the difference is what the tables cost. Built with
// ZUV_PROBE_EMPTY_REGEX, it holds one empty std::regex instead, as each location rule does: what
// the C++ locale, which that object makes, costs a process by itself.

#include <sys/resource.h>
#include <time.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> allocations{0};
std::atomic<long> allocatedBytes{0};

long long nowNanoseconds(clockid_t clock) {
    timespec t{};
    clock_gettime(clock, &t);
    return t.tv_sec * 1000000000LL + t.tv_nsec;
}

long pageFaults() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt + usage.ru_majflt;
}

// Runs before every other constructor in this executable, the tables' included. CPU time as
// well as wall time, since on a loaded machine the wall time says more about the neighbours;
// page faults, since on a virtual machine each costs more than most of the work around it.
struct StartMark {
    long long wall = nowNanoseconds(CLOCK_MONOTONIC);
    long long cpu = nowNanoseconds(CLOCK_PROCESS_CPUTIME_ID);
    long faults = pageFaults();
};
__attribute__((init_priority(101))) StartMark startMark;

}  // namespace

#ifdef ZUV_PROBE_EMPTY_REGEX
#include <regex>
const std::regex emptyExpression;
#endif

void* operator new(std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    allocatedBytes.fetch_add(static_cast<long>(size), std::memory_order_relaxed);
    if (void* p = std::malloc(size ? size : 1)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

int main() {
    const long long wallAtMain = nowNanoseconds(CLOCK_MONOTONIC);
    const long long cpuAtMain = nowNanoseconds(CLOCK_PROCESS_CPUTIME_ID);
    const long faultsAtMain = pageFaults();
    std::printf("%ld %ld %lld %lld %ld\n", allocations.load(), allocatedBytes.load(), wallAtMain - startMark.wall,
                cpuAtMain - startMark.cpu, faultsAtMain - startMark.faults);
    return 0;
}
