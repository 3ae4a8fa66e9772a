#include "externPhase.h"

#include "ipmi/zuvIPMIService.h"
#include "rmcScenarios.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace zuvkernel {

void announce(const std::string& phase) {
    auto& service = *static_cast<zuvIPMIService*>(zuvIPMIService::getIPMIServiceInstance());
    for (int attempt = 0; attempt < 100; ++attempt) {
        uint8_t code = 0xFF;
        uint8_t body[4];
        uint16_t requestSize = static_cast<uint16_t>(phase.size());
        uint16_t responseSize = sizeof body;
        service.transfer(kMarkerNetFn, kMarkerCmd, 0, phase.data(), requestSize, body, responseSize, &code);
        if (code == 0) return;
        usleep(100000);
    }
    ADD_FAILURE() << "the host never acknowledged phase " << phase;
}

}  // namespace zuvkernel
