#pragma once
// Turns an internal event number into the event id of the running platform: some ids differ
// between platforms, so the platform service builder picks the resolver by platform code.

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

class IELEventResolver {
public:
    virtual ~IELEventResolver() = default;
    // The event id of an internal number, cut to 16 bits for the look-up. Throws
    // std::runtime_error "IEL Event Not Matching" for a number the platform doesn't know.
    virtual uint32_t resolve(int number) = 0;
};

namespace IELEventMap {

using IELEventPair = std::pair<int16_t, uint32_t>;

// The number-to-id pairs of platforms before SPH (47 rows) and of SPH (49 rows).
const std::vector<IELEventPair>& preSPHEventTable();
const std::vector<IELEventPair>& sphEventTable();

// The look-up both platform resolvers share; they differ only in the table they are given.
class IELEventTableResolver : public IELEventResolver {
public:
    uint32_t resolve(int number) override;
    size_t size() const { return events.size(); }

protected:
    explicit IELEventTableResolver(const std::vector<IELEventPair>& table);

private:
    std::map<int16_t, uint32_t> events;  // filled once, read-only afterwards
};

class IELEventPreSPH : public IELEventTableResolver {
public:
    explicit IELEventPreSPH(const std::vector<IELEventPair>& table = preSPHEventTable())
        : IELEventTableResolver(table) {}
};

class IELEventSPH : public IELEventTableResolver {
public:
    explicit IELEventSPH(const std::vector<IELEventPair>& table = sphEventTable()) : IELEventTableResolver(table) {}
};

}  // namespace IELEventMap
