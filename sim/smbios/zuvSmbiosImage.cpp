#include "zuvSmbiosImage.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace zuvsim {
namespace {

constexpr uint8_t kEntryLength = 0x1F;

void put16(std::vector<uint8_t>& v, uint16_t x) {
    v.push_back(uint8_t(x));
    v.push_back(uint8_t(x >> 8));
}

void set16(uint8_t* p, uint16_t x) {
    p[0] = uint8_t(x);
    p[1] = uint8_t(x >> 8);
}

void set32(uint8_t* p, uint32_t x) {
    for (int i = 0; i < 4; ++i) p[i] = uint8_t(x >> (8 * i));
}

uint8_t checksum(const uint8_t* p, size_t n) {
    uint8_t sum = 0;
    for (size_t i = 0; i < n; ++i) sum = uint8_t(sum + p[i]);
    return uint8_t(-sum);
}

// Gives string numbers to the non-empty texts of a structure, in order.
class StringSet {
public:
    uint8_t add(const std::string& text) {
        if (text.empty()) return 0;
        texts.push_back(text);
        return uint8_t(texts.size());
    }
    const std::vector<std::string>& all() const { return texts; }

private:
    std::vector<std::string> texts;
};

}  // namespace

SmbiosImage& SmbiosImage::addStructure(uint8_t type, const std::vector<uint8_t>& formatted,
                                       const std::vector<std::string>& strings) {
    size_t start = structures.size();
    structures.push_back(type);
    structures.push_back(uint8_t(4 + formatted.size()));
    put16(structures, nextHandle++);
    structures.insert(structures.end(), formatted.begin(), formatted.end());
    for (const std::string& s : strings) {
        structures.insert(structures.end(), s.begin(), s.end());
        structures.push_back(0);
    }
    if (strings.empty()) structures.push_back(0);
    structures.push_back(0);
    ++structureCount;
    size_t size = structures.size() - start;
    if (size > largestStructure) largestStructure = uint16_t(size);
    return *this;
}

SmbiosImage& SmbiosImage::addType1(const SmbiosSystem& s) {
    StringSet strings;
    std::vector<uint8_t> f;
    f.push_back(strings.add(s.manufacturer));
    f.push_back(strings.add(s.productName));
    f.push_back(strings.add(s.version));
    f.push_back(strings.add(s.serialNumber));
    f.insert(f.end(), s.uuid.begin(), s.uuid.end());
    f.push_back(s.wakeUpType);
    f.push_back(strings.add(s.skuNumber));
    f.push_back(strings.add(s.family));
    size_t formatted = s.length > 4 ? s.length - 4u : 0u;
    f.resize(formatted, 0);
    // Strings that the shortened structure no longer names are not written either.
    size_t named = 0;
    for (size_t i = 0; i < f.size(); ++i) {
        bool stringByte = i < 4 || i == 21 || i == 22;
        if (stringByte && f[i] != 0) named = std::max<size_t>(named, f[i]);
    }
    std::vector<std::string> kept(strings.all().begin(), strings.all().begin() + long(named));
    return addStructure(1, f, kept);
}

SmbiosImage& SmbiosImage::addType1(const std::string& family, const SmbiosUuid& uuid) {
    SmbiosSystem s;
    s.family = family;
    s.uuid = uuid;
    return addType1(s);
}

SmbiosImage& SmbiosImage::addSlot(const SmbiosSlot& s) {
    StringSet strings;
    std::vector<uint8_t> f;
    f.push_back(strings.add(s.designation));
    f.push_back(s.type);
    f.push_back(s.busDataWidth);
    f.push_back(s.currentUsage);
    f.push_back(s.slotLength);
    put16(f, s.id);
    f.push_back(s.characteristics1);
    f.push_back(s.characteristics2);
    put16(f, s.segmentGroupNum);
    f.push_back(s.busNum);
    f.push_back(s.devFuncNum);
    f.resize(s.length > 4 ? s.length - 4u : 0u, 0);
    return addStructure(9, f, strings.all());
}

SmbiosImage& SmbiosImage::addOnboard(const SmbiosOnboard& d) {
    StringSet strings;
    std::vector<uint8_t> f;
    f.push_back(strings.add(d.referenceDesignation));
    f.push_back(uint8_t((d.enabled ? 0x80 : 0) | (d.deviceType & 0x7F)));
    f.push_back(d.deviceTypeInstance);
    put16(f, d.segmentGroupNum);
    f.push_back(d.busNum);
    f.push_back(uint8_t(d.deviceNum << 3 | (d.functionNum & 0x07)));
    return addStructure(41, f, strings.all());
}

SmbiosImage& SmbiosImage::addBios(const std::string& vendor, const std::string& version) {
    StringSet strings;
    std::vector<uint8_t> f;
    f.push_back(strings.add(vendor));
    f.push_back(strings.add(version));
    put16(f, 0xE000);                                            // starting address segment
    f.push_back(strings.add("01/01/2026"));                      // release date
    f.push_back(0x0F);                                           // ROM size, 1 MiB
    for (int i = 0; i < 8; ++i) f.push_back(i == 0 ? 0x80 : 0);  // characteristics
    f.push_back(0x01);
    f.push_back(0x0C);  // extension bytes: ACPI, UEFI
    f.push_back(1);
    f.push_back(0);  // BIOS release 1.0
    f.push_back(0xFF);
    f.push_back(0xFF);  // no embedded controller
    return addStructure(0, f, strings.all());
}

SmbiosImage& SmbiosImage::addRaw(const std::vector<uint8_t>& bytes) {
    structures.insert(structures.end(), bytes.begin(), bytes.end());
    return *this;
}

SmbiosImage& SmbiosImage::setEntryOffset(size_t offset) {
    entryOffset = offset;
    return *this;
}

SmbiosImage& SmbiosImage::setTableLength(uint16_t length) {
    tableLengthSet = true;
    tableLengthOverride = length;
    return *this;
}

SmbiosImage& SmbiosImage::withoutEndOfTable() {
    endOfTable = false;
    return *this;
}

std::vector<uint8_t> SmbiosImage::table() const {
    std::vector<uint8_t> t = structures;
    if (endOfTable) {
        t.push_back(127);
        t.push_back(4);
        put16(t, nextHandle);
        t.push_back(0);
        t.push_back(0);
    }
    return t;
}

std::vector<uint8_t> SmbiosImage::bytes() const {
    std::vector<uint8_t> t = table();
    std::vector<uint8_t> image(entryOffset + kEntryLength, 0);
    uint8_t* ep = image.data() + entryOffset;
    std::copy_n("_SM_", 4, ep);
    ep[5] = kEntryLength;
    ep[6] = 2;  // SMBIOS 2.8
    ep[7] = 8;
    set16(ep + 8, largestStructure);
    std::copy_n("_DMI_", 5, ep + 0x10);
    set16(ep + 0x16, tableLengthSet ? tableLengthOverride : uint16_t(t.size()));
    set32(ep + 0x18, uint32_t(entryOffset + kEntryLength));
    set16(ep + 0x1C, uint16_t(structureCount + (endOfTable ? 1 : 0)));
    ep[0x1E] = 0x28;
    ep[0x15] = checksum(ep + 0x10, 0x0F);
    ep[4] = checksum(ep, kEntryLength);
    image.insert(image.end(), t.begin(), t.end());
    return image;
}

void SmbiosImage::writeTo(const std::string& path) const {
    std::vector<uint8_t> image = bytes();
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(image.data()), std::streamsize(image.size()));
    out.close();
    if (!out) throw std::runtime_error("cannot write SMBIOS image " + path);
}

}  // namespace zuvsim
