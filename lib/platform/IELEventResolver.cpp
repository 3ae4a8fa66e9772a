#include "platform/IELEventResolver.h"

#include <stdexcept>

namespace IELEventMap {

IELEventTableResolver::IELEventTableResolver(const std::vector<IELEventPair>& table)
    : events(table.begin(), table.end()) {}

uint32_t IELEventTableResolver::resolve(int number) {
    const auto found = events.find(static_cast<int16_t>(number));
    if (found == events.end()) throw std::runtime_error("IEL Event Not Matching");
    return found->second;
}

}  // namespace IELEventMap
