#pragma once
// A copy of the RMC's whole SDR repository, read once per process on first use and then walked
// by iterators over plain memory.

#include "ipmi/zuvIPMIServiceInterface.h"

#include <cstdint>
#include <mutex>
#include <vector>

namespace zuvIPMI {

// One record: the 5-byte SDR header (record id, version, type, length) and up to 250 bytes of body.
struct GENERIC_SDR {
    uint8_t bytes[255];
};
static_assert(sizeof(GENERIC_SDR) == 255, "one SDR record");

class SDRRepositoryCacheInterface {
public:
    using iterator = std::vector<GENERIC_SDR>::iterator;
    using const_iterator = std::vector<GENERIC_SDR>::const_iterator;
    using reverse_iterator = std::vector<GENERIC_SDR>::reverse_iterator;
    using const_reverse_iterator = std::vector<GENERIC_SDR>::const_reverse_iterator;

    virtual iterator begin() = 0;
    virtual const_iterator begin() const = 0;
    virtual iterator end() = 0;
    virtual const_iterator end() const = 0;
    virtual reverse_iterator rbegin() = 0;
    virtual const_reverse_iterator rbegin() const = 0;
    virtual reverse_iterator rend() = 0;
    virtual const_reverse_iterator rend() const = 0;
    virtual ~SDRRepositoryCacheInterface() = default;
};

class SDRRepositoryCache : public SDRRepositoryCacheInterface {
public:
    // The singleton; `service` counts on the first call only. Construction does no IPMI traffic.
    static SDRRepositoryCache* getInstance(IPMIServiceInterface* service);
    explicit SDRRepositoryCache(IPMIServiceInterface* service) : ipmiService(service) {}

    // Each ensures that the load has been done first.
    iterator begin() override;
    const_iterator begin() const override;
    iterator end() override;
    const_iterator end() const override;
    reverse_iterator rbegin() override;
    const_reverse_iterator rbegin() const override;
    reverse_iterator rend() override;
    const_reverse_iterator rend() const override;

    // Reads one record under a reservation: the 5-byte header, then the body in pieces of 16.
    static void readSDR(uint16_t recordId, uint16_t reservationId, IPMIServiceInterface& service, GENERIC_SDR& record,
                        uint16_t& nextRecordId);
    void loadRecords();

private:
    void ensureLoaded() const;

    std::vector<GENERIC_SDR> records;
    IPMIServiceInterface* ipmiService;
    mutable std::once_flag loadFlag;
};

}  // namespace zuvIPMI
