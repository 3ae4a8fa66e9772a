#pragma once
// Names of PCI vendors by vendor id, from the PCI ID list. Built before main in every
// process that links the tables, read-only afterwards. Keys are exactly four lower-case
// hexadecimal digits without "0x": a reader holding "0x1000" or "ABCD" must bring the id to
// that form first. An id that the list doesn't hold has no entry and no fallback name.

#include <cstddef>
#include <map>
#include <memory_resource>
#include <string>
#include <string_view>

// The generated list: its key and name pairs one after another, each the four characters of
// the key, the name and a NUL, keys ascending. Plain characters, so the list needs no
// relocation at start and stays in read-only pages that every process shares.
extern const char pciVendorNameList[];
extern const std::size_t pciVendorNameCount;
// The "Version:" of the PCI ID list that the generated list was taken from.
extern const char* const pciVendorNamesListVersion;

// Calls visit(key, name) for each pair of the list, in its order.
template <typename Visit>
void forEachPciVendorName(Visit visit) {
    for (const char* entry = pciVendorNameList; *entry != '\0';) {
        const std::string_view name(entry + 4);
        visit(std::string_view(entry, 4), name);
        entry += 4 + name.size() + 1;
    }
}

// Keys ordered as text; a look-up takes any string type (std::string, a literal, a view)
// without making a key of the map's own type first.
struct zuvPciVendorKeyOrder {
    using is_transparent = void;
    bool operator()(std::string_view left, std::string_view right) const noexcept { return left < right; }
};

// An ordered map from string to string. Its nodes, and the names too long to stay inside
// their strings, come from one block mapped for it before main: no heap allocation while it
// is built, nothing freed one by one when it is torn down.
using zuvPciVendorNameMap = std::pmr::map<std::pmr::string, std::pmr::string, zuvPciVendorKeyOrder>;
extern const zuvPciVendorNameMap pciVendorNames;

// What the block must hold, from the generator: zuvPciVendorNodeBytes per entry (a tree node
// is four words besides its value) and every name with its NUL.
constexpr std::size_t zuvPciVendorNodeBytes = 4 * sizeof(void*) + sizeof(zuvPciVendorNameMap::value_type);
extern const std::size_t pciVendorNameMapBytes;
