#include "ipmi/zuvSDRRepositoryCache.h"

#include "ipmi/zuvIPMIExceptions.h"
#include "log/zuvLogger.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#define TAG "SDR_CACHE"

namespace zuvIPMI {
namespace {
const uint16_t kResponseCapacity = 257;  // 2 bytes of next record id, 255 of record
const uint16_t kEndOfRepository = 0xFFFF;
const uint8_t kHeaderSize = 5;
const uint16_t kNextIdSize = 2;
const uint8_t kPieceSize = 16;
const size_t kRecordSize = sizeof(GENERIC_SDR);
}  // namespace

SDRRepositoryCache* SDRRepositoryCache::getInstance(IPMIServiceInterface* service) {
    static SDRRepositoryCache cache(service);
    return &cache;
}

void SDRRepositoryCache::ensureLoaded() const {
    std::call_once(loadFlag, [this] { const_cast<SDRRepositoryCache*>(this)->loadRecords(); });
}

SDRRepositoryCache::iterator SDRRepositoryCache::begin() {
    ensureLoaded();
    return records.begin();
}
SDRRepositoryCache::const_iterator SDRRepositoryCache::begin() const {
    ensureLoaded();
    return records.begin();
}
SDRRepositoryCache::iterator SDRRepositoryCache::end() {
    ensureLoaded();
    return records.end();
}
SDRRepositoryCache::const_iterator SDRRepositoryCache::end() const {
    ensureLoaded();
    return records.end();
}
SDRRepositoryCache::reverse_iterator SDRRepositoryCache::rbegin() {
    ensureLoaded();
    return records.rbegin();
}
SDRRepositoryCache::const_reverse_iterator SDRRepositoryCache::rbegin() const {
    ensureLoaded();
    return records.rbegin();
}
SDRRepositoryCache::reverse_iterator SDRRepositoryCache::rend() {
    ensureLoaded();
    return records.rend();
}
SDRRepositoryCache::const_reverse_iterator SDRRepositoryCache::rend() const {
    ensureLoaded();
    return records.rend();
}

void SDRRepositoryCache::readSDR(uint16_t recordId, uint16_t reservationId, IPMIServiceInterface& service,
                                 GENERIC_SDR& record, uint16_t& nextRecordId) {
    std::memset(&record, 0, sizeof record);
    auto* response = static_cast<uint8_t*>(std::malloc(kResponseCapacity));
    if (response == nullptr) throw std::bad_alloc();
    std::shared_ptr<void> release(nullptr, [response](void*) { std::free(response); });

    uint8_t offset = 0;
    uint8_t bytesToRead = kHeaderSize;
    uint8_t remaining = 0;
    uint16_t size = 0;
    for (;;) {
        const GET_SDR_REQUEST request{reservationId, recordId, offset, bytesToRead};
        std::memset(response, 0, kResponseCapacity);
        try {
            service.getSDR(request, response, kResponseCapacity, size);
            // Without its 2 bytes of next record id the answer can't be placed in the chain of
            // records: the read fails rather than store a record that the RMC didn't give.
            if (size < kNextIdSize) throw InvalidResponseDataSizeException("Get SDR");
        } catch (const Exception& e) {
            ZUV_LOG_DEBUG(TAG, "Failed to retrieve SDR [0x%04x] @ offset [0x%02x]: (%s)!", recordId, offset, e.what());
            throw;
        }
        // What comes beyond the 255 bytes of the record (a length byte above 250) is dropped.
        const size_t received = size - kNextIdSize;
        const size_t stored = std::min(received, kRecordSize - offset);
        std::memcpy(record.bytes + offset, response + 2, stored);
        if (offset == 0) remaining = record.bytes[4];
        offset = static_cast<uint8_t>(offset + stored);
        if (remaining == 0 || offset == kRecordSize) break;
        bytesToRead = std::min(remaining, kPieceSize);
        remaining = static_cast<uint8_t>(remaining - bytesToRead);
    }
    nextRecordId = static_cast<uint16_t>(response[0] | response[1] << 8);
    ZUV_LOG_DEBUG(TAG, "SDR [0x%04x] read successful.", recordId);
}

void SDRRepositoryCache::loadRecords() {
    records.clear();
    SDR_REPOSITORY_INFO info{};
    GENERIC_SDR record{};
    try {
        ipmiService->getSDRRepositoryInfo(info);
    } catch (const Exception& e) {
        ZUV_LOG_DEBUG(TAG, "Failed to build SDR Repository cache: (%s)!", e.what());
        return;
    }
    ZUV_LOG_DEBUG(TAG, "SDR Version: [0x%02x]", info.sdrVersion);
    ZUV_LOG_DEBUG(TAG, "Total SDR record count: [%d]", info.recordCount);
    ZUV_LOG_DEBUG(TAG, "Supported operations: [0x%02hhx]", info.operationSupport);
    uint16_t count = 0;
    uint16_t nextRecordId = 0;
    while (info.recordCount != 0) {
        uint16_t reservationId = 0;
        try {
            ipmiService->reserveSDRRepository(reservationId);
        } catch (const Exception& e) {
            ZUV_LOG_DEBUG(TAG, "Failed to build SDR Repository cache: (%s)!", e.what());
            return;
        }
        ZUV_LOG_DEBUG(TAG, "Reservation ID: [0x%04x]", reservationId);
        bool reservationLost = false;
        while (!reservationLost) {
            try {
                readSDR(nextRecordId, reservationId, *ipmiService, record, nextRecordId);
            } catch (const SDRRepositoryReservationNotValidException&) {
                ZUV_LOG_DEBUG(TAG,
                              "Reservation cancelled/invalidated when reading SDR [%d] @ [0x%04x]! Retrying "
                              "reservation.",
                              count, nextRecordId);
                reservationLost = true;
                continue;
            } catch (const Exception& e) {
                ZUV_LOG_DEBUG(TAG, "Failed to retrieve SDR [0x%04x]: (%s)!", nextRecordId, e.what());
                return;
            }
            records.push_back(record);
            ++count;
            if (count == info.recordCount || nextRecordId == kEndOfRepository) {
                ZUV_LOG_DEBUG(TAG, "Completed reading all SDRs in the repository.");
                return;
            }
        }
    }
    ZUV_LOG_DEBUG(TAG, "Completed reading all SDRs in the repository.");
}

}  // namespace zuvIPMI
