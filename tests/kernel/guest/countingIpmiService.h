#pragma once
// Forwards the standard commands to the real service and counts them, so that a test can tell
// how many transactions the SDR cache made through the kernel.

#include "ipmi/zuvIPMIServiceInterface.h"

namespace zuvkernel {

class CountingIpmiService : public zuvIPMI::IPMIServiceInterface {
public:
    explicit CountingIpmiService(zuvIPMI::IPMIServiceInterface& real) : real(real) {}

    void getDeviceID(zuvIPMI::DEVICE_ID_INFO& info) override { real.getDeviceID(info); }
    void getSDRRepositoryInfo(zuvIPMI::SDR_REPOSITORY_INFO& info) override {
        ++infoCalls;
        real.getSDRRepositoryInfo(info);
    }
    void reserveSDRRepository(uint16_t& reservationId) override {
        ++reserveCalls;
        real.reserveSDRRepository(reservationId);
    }
    void getSDR(const zuvIPMI::GET_SDR_REQUEST& request, uint8_t* buffer, uint16_t capacity, uint16_t& size) override {
        ++getSdrCalls;
        real.getSDR(request, buffer, capacity, size);
    }

    int infoCalls = 0, reserveCalls = 0, getSdrCalls = 0;

private:
    zuvIPMI::IPMIServiceInterface& real;
};

}  // namespace zuvkernel
