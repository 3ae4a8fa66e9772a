#include <sys/mman.h>

#include <cstdint>
#include <new>

#include "tables/zuvPciVendorNames.h"
#include "tables/zuvTablesInitOrder.h"

namespace {

// The map's block: whole huge pages where the kernel offers them, so that the map costs a
// page fault or two at start instead of one per 4 KiB page (on a virtual machine each fault
// is dear). Elsewhere the same block is prefaulted in one call, or faulted page by page.
class MappedBlock {
public:
    explicit MappedBlock(std::size_t bytes) : size((bytes + hugePage - 1) / hugePage * hugePage) {
        // Map one huge page more than needed and trim both ends to an aligned run.
        void* reserved = mmap(nullptr, size + hugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (reserved == MAP_FAILED) throw std::bad_alloc();
        // The offset is computed on the address, the pointers are derived from the mapping's own.
        const auto start = reinterpret_cast<std::uintptr_t>(reserved);
        const std::size_t lead = (hugePage - start % hugePage) % hugePage;
        char* aligned = static_cast<char*>(reserved) + lead;
        if (lead > 0) munmap(reserved, lead);
        munmap(aligned + size, hugePage - lead);
        data = aligned;
#ifdef MADV_HUGEPAGE
        madvise(data, size, MADV_HUGEPAGE);
#endif
#ifdef MADV_POPULATE_WRITE
        madvise(data, bytes, MADV_POPULATE_WRITE);  // one call instead of a fault per page
#endif
    }
    ~MappedBlock() {
        munmap(data, size);
        pciVendorNameRoom = {};
    }
    MappedBlock(const MappedBlock&) = delete;
    MappedBlock& operator=(const MappedBlock&) = delete;

    static constexpr std::size_t hugePage = std::size_t{2} << 20;
    const std::size_t size;
    void* data = nullptr;
};

ZUV_BUILT_SECOND MappedBlock vendorNameBlock(pciVendorNameMapBytes);

}  // namespace

// Names are taken from below the end of the part that the generator sized, which was faulted
// in with the nodes. Were that size ever too small, the rest would come from the heap.
ZUV_BUILT_SECOND zuvPciVendorNameRoom pciVendorNameRoom{
    static_cast<char*>(vendorNameBlock.data), static_cast<char*>(vendorNameBlock.data),
    static_cast<char*>(vendorNameBlock.data) + pciVendorNameMapBytes,
    static_cast<char*>(vendorNameBlock.data) + vendorNameBlock.size};

// The list is sorted, so each entry goes in at the end, where the hint points.
ZUV_BUILT_SECOND const zuvPciVendorNameMap pciVendorNames = [] {
    zuvPciVendorNameMap names;
    forEachPciVendorName(
        [&names](std::string_view key, std::string_view name) { names.emplace_hint(names.end(), key, name); });
    // The block holds the map and nothing else: a reader's copy of a name is the reader's own.
    pciVendorNameRoom.back = pciVendorNameRoom.front;
    return names;
}();
