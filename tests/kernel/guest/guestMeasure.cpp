#include "guestMeasure.h"

#include "externPhase.h"
#include "ipmi/zuvIPMIService.h"
#include "ipmi/zuvSDRRepositoryCache.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <iterator>

namespace zuvkernel {

namespace {

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int measure(bool announcePhase) {
    try {
        if (announcePhase) announce("measure");
        auto& service = *zuvIPMIService::getIPMIServiceInstance();
        uint16_t reservation = 0;
        service.reserveSDRRepository(reservation);

        // The 5-byte header of the first record, over and over.
        const int transactions = 200;
        zuvIPMI::GET_SDR_REQUEST request{reservation, 0, 0, 5};
        uint8_t buffer[257];
        uint16_t size = 0;
        auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < transactions; ++i) service.getSDR(request, buffer, sizeof buffer, size);
        double elapsed = secondsSince(start);
        const char* bmc = announcePhase ? "extern" : "bmc-sim";
        std::printf("ZUVK MEASURE %s get_sdr_rate %.1f transactions/s\n", bmc, transactions / elapsed);

        zuvIPMI::SDRRepositoryCache cache(&service);
        start = std::chrono::steady_clock::now();
        long records = std::distance(cache.begin(), cache.end());
        elapsed = secondsSince(start);
        std::printf("ZUVK MEASURE %s repository_load %.1f ms for %ld records\n", bmc, elapsed * 1000, records);
        return 0;
    } catch (const std::exception& e) {
        std::printf("ZUVK MEASURE failed: %s\n", e.what());
        return 1;
    }
}

}  // namespace zuvkernel
