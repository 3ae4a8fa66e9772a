#pragma once
// Names of PCI vendors by vendor id, from the PCI ID list. Built before main in every
// process that links the tables, read-only afterwards. Keys are exactly four lower-case
// hexadecimal digits without "0x": a reader holding "0x1000" or "ABCD" must bring the id to
// that form first. An id that the list doesn't hold has no entry and no fallback name.

#include <cstddef>
#include <cstdint>
#include <map>
#include <new>
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

// The room that the vendor map's allocator hands out: one block mapped for the map before
// main, nodes taken from its front upwards and the names too long to stay inside their strings
// from its back downwards, so that neither pads the other. What is taken from the block is
// never freed one by one: the block goes whole when the map is gone. Once the map is built the
// room is closed, so a reader's copy of a name comes from the heap and goes back to it.
struct zuvPciVendorNameRoom {
    char* begin = nullptr;  // the block
    char* front = nullptr;  // the first byte not taken from the front
    char* back = nullptr;   // one past the last byte not taken from the back
    char* end = nullptr;
};
extern zuvPciVendorNameRoom pciVendorNameRoom;

// Stateless, so that a string is four words and a node twelve (a polymorphic allocator adds a
// word to each string and one to the map).
template <typename T>
struct zuvPciVendorNameAllocator {
    using value_type = T;
    zuvPciVendorNameAllocator() noexcept = default;
    // Implicit, as std::allocator's: the containers convert between the rebinds of an allocator.
    template <typename U>
    zuvPciVendorNameAllocator(const zuvPciVendorNameAllocator<U>&) noexcept {}  // NOLINT(google-explicit-constructor)

    T* allocate(std::size_t count) {
        zuvPciVendorNameRoom& room = pciVendorNameRoom;
        const std::size_t bytes = count * sizeof(T);
        if (alignof(T) == 1 && static_cast<std::size_t>(room.back - room.front) >= bytes) {
            room.back -= bytes;
            return reinterpret_cast<T*>(room.back);
        }
        if (alignof(T) > 1) {
            const std::size_t pad = -reinterpret_cast<std::uintptr_t>(room.front) & (alignof(T) - 1);
            if (static_cast<std::size_t>(room.back - room.front) >= pad + bytes) {
                room.front += pad + bytes;
                return reinterpret_cast<T*>(room.front - bytes);
            }
        }
        return static_cast<T*>(::operator new(bytes));
    }
    void deallocate(T* p, std::size_t) noexcept {
        const auto at = reinterpret_cast<std::uintptr_t>(p);
        if (at < reinterpret_cast<std::uintptr_t>(pciVendorNameRoom.begin) ||
            at >= reinterpret_cast<std::uintptr_t>(pciVendorNameRoom.end))
            ::operator delete(p);
    }
    template <typename U>
    bool operator==(const zuvPciVendorNameAllocator<U>&) const noexcept {
        return true;
    }
    template <typename U>
    bool operator!=(const zuvPciVendorNameAllocator<U>&) const noexcept {
        return false;
    }
};

// An ordered map from string to string, built without a heap allocation and torn down without
// a free.
using zuvPciVendorName = std::basic_string<char, std::char_traits<char>, zuvPciVendorNameAllocator<char>>;
using zuvPciVendorNameMap = std::map<zuvPciVendorName, zuvPciVendorName, zuvPciVendorKeyOrder,
                                     zuvPciVendorNameAllocator<std::pair<const zuvPciVendorName, zuvPciVendorName>>>;
extern const zuvPciVendorNameMap pciVendorNames;

// What the block must hold, from the generator: zuvPciVendorNodeBytes per entry (a tree node
// is four words besides its value) and every name with its NUL.
constexpr std::size_t zuvPciVendorNodeBytes = 4 * sizeof(void*) + sizeof(zuvPciVendorNameMap::value_type);
extern const std::size_t pciVendorNameMapBytes;
