// Platform identification: the SMBIOS reader over images at the host's SMBIOS device path, the event
// resolvers, the platform services and the cached platform code by SMBIOS family and kernel line.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "deliveryTestRig.h"
#include "fakeHostSystem.h"
#include "platform/SMBIOSVMware.h"
#include "platform/zuvPlatformCode.h"
#include "platform/zuvPlatformServices.h"
#include "platform/zuvSmbiosUuid.h"

using Bytes = std::vector<uint8_t>;
using namespace deliverytest;
using zuvsim::SmbiosImage;

namespace {

// The records of a type as text, "-1" when there are none (with the outputs cleared). Slots as
// smbiosPrintSlots prints them, exact labels taken off (a wrong one stays): "#1 0x0001 17 ...;".
std::string dump(int type) {
    void* table = &table;
    unsigned count = 9;
    if (smbiosGetRecords(type, &table, &count) != 0) return table == nullptr && count == 0 ? "-1" : "-1, not cleared";
    testing::internal::CaptureStdout();
    if (type == 9) smbiosPrintSlots(static_cast<smbiosSystemSlot*>(table), int(count));
    std::string text = testing::internal::GetCapturedStdout();
    for (std::string label : {"Handle", "Length", "designation", "type", "busDataWidth", "currentUsage", "length", "id",
                              "characteristics1", "characteristics2", "segmentGroupNum", "busNum", "devFuncNum"})
        text = std::regex_replace(text, std::regex("\n   " + label + std::string(20 - label.size(), ' ') + ": "), " ");
    text = std::regex_replace(text, std::regex("System Slot record |  \\(Type 9\\)|\n(?=\n)"), "");
    std::replace(text.begin(), text.end(), '\n', ';');
    char line[1024];
    for (unsigned i = 0; i < count && type != 9; ++i) {
        const auto& s = static_cast<smbiosSystemInfo*>(table)[i];
        const auto& d = static_cast<smbiosOnboardDevice*>(table)[i];
        if (type == 1)
            snprintf(line, sizeof line, "%d %d %d %s|%s|%s|%s %s %d %s|%s;", s.recordType, s.recordLength, s.handle,
                     s.manufacturer, s.productName, s.version, s.serialNumber, s.uuid, s.wakeUpType, s.skuNumber,
                     s.family);
        else
            snprintf(line, sizeof line, "%d %d %d %s %d %d %x %x %d %d;", d.recordType, d.recordLength, d.handle,
                     d.referenceDesignation, d.deviceType, d.deviceTypeInstance, d.segmentGroupNum, d.busNum,
                     d.deviceNum, d.functionNum);
        text += line;
    }
    free(table);
    return text;
}

// A type 1 structure of a formatted length, its UUID with the 0xD011 pattern.
SmbiosImage system(uint8_t length, const std::string& family = "F") {
    Bytes formatted = {1, 2, 3, 4, 1, 2, 3, 4, 5, 6, 0x11, 0xD0, 8, 9, 10, 11, 12, 13, 14, 15, 6, 5, 6};
    formatted.resize(length - 4u);
    return SmbiosImage().addStructure(1, formatted, {"M", std::string(70, 'P'), "V", "S", "K", family});
}

const Bytes kSlot = {1, 0xA5, 0x0B, 3, 4, 0x34, 0x12, 0x0C, 0x05, 0x02, 0x01, 0x3B, 0x1A};
const std::string kSlotFields = " 165 11 3 4 4660 0xc 0x5 0x102 0x3b 0x1a;";
const std::string kSlotText = "#1 0x0001 17 Slot 3" + kSlotFields;
const std::string kSystemText = "M|" + std::string(70, 'P') + "|V|S 01020304-0506-11d0-0809-0a0b0c0d0e0f 6 ";

}  // namespace

TEST(Smbios, RecordsOfEachTypeFieldByFieldStringNumbersAndUuidTexts) {
    const SmbiosImage bios = SmbiosImage().addBios(), host = SmbiosImage(bios).addStructure(9, kSlot, {"Slot 3"});
    const Bytes good = host.bytes();
    auto shortSlot = [](int length) { return Bytes(kSlot.begin(), kSlot.begin() + length - 4); };
    const std::tuple<const char*, Bytes, int, std::string> cases[] = {
        {"slot behind an entry point at 64", SmbiosImage(host).setEntryOffset(64).bytes(), 9, kSlotText},
        {"slot of length 13", SmbiosImage(bios).addStructure(9, shortSlot(13), {"S"}).bytes(), 9,
         "#1 0x0001 13 S 165 11 3 4 4660 0xc 0x5 0x0 0x0 0x0;"},
        {"second slot of length 14, its name unprintable and cut",
         SmbiosImage(host).addStructure(9, shortSlot(14), {"~x\x7fy\x80z\x1f" + std::string(200, 'D')}).bytes(), 9,
         kSlotText + "#2 0x0002 14 ~x.y.z." + std::string(120, 'D') + " 165 11 3 4 4660 0xc 0x5 0x7e02 0x78 0x2e;"},
        {"onboard device", SmbiosImage(bios).addStructure(41, {1, 0x85, 2, 1, 2, 0x19, 0xFD}, {"NIC 2"}).bytes(), 41,
         "41 11 1 NIC 2 5 2 201 19 31 5;"},
        {"system of 27 bytes, its family cut to the field", system(27, std::string(100, 'F')).bytes(), 1,
         "1 27 0 " + kSystemText + "K|" + std::string(63, 'F') + ";"},
        {"system of 26 bytes", system(26).bytes(), 1, "1 26 0 " + kSystemText + ".|;"},
        {"system of 25 bytes", system(25).bytes(), 1, "1 25 0 " + kSystemText + ".|;"},
        {"system of 24 bytes", system(24).bytes(), 1, "1 24 0 M|" + std::string(70, 'P') + "|V|S  0 |;"},
        {"system of 8 bytes", system(8).bytes(), 1, "1 8 0 M|" + std::string(70, 'P') + "|V|S  0 |;"},
        {"system of 7 bytes", system(7).bytes(), 1, "1 7 0 |||  0 |;"},
        {"no structure of the type", good, 41, "-1"},
        {"type without a record layout", good, 0, "-1"},
        // The walk: the length byte is added whatever it says; a structure not closed inside the table ends it.
        {"length below 4", SmbiosImage(bios).addRaw({9, 1, 0xAB, 0, 0}).addStructure(9, kSlot, {"Slot 3"}).bytes(), 9,
         "#1 0x00AB 1 Undefined 0 0 0 0 0 0x0 0x0 0x0 0x0 0x0;#2 0x0001 17 Slot 3" + kSlotFields},
        {"no closing pair", SmbiosImage(host).addRaw({9, 5, 2, 0, 1, 'S'}).withoutEndOfTable().bytes(), 9, kSlotText},
        {"table length ending inside a structure",
         SmbiosImage(host).addStructure(9, kSlot, {"Slot 4"}).setTableLength(uint16_t(good.size() - 33)).bytes(), 9,
         kSlotText},
        {"table length beyond what was read", SmbiosImage(host).setTableLength(0xFFFF).bytes(), 9, kSlotText},
        // The entry point: "_SM_" on a 4-byte boundary within the first 64 KiB, and its fields inside what was read.
        {"no anchor", Bytes(4096, '_'), 1, "open -1"},
        {"anchor off a 4-byte boundary", SmbiosImage(bios).setEntryOffset(2).bytes(), 0, "open -1"},
        {"anchor beyond 64 KiB", SmbiosImage(bios).setEntryOffset(0x10000).bytes(), 0, "open -1"},
        {"table said to start past what was read", Bytes(good.begin(), good.begin() + 0x18), 0, "open -1"},
    };
    for (const auto& [name, image, type, expected] : cases) {
        installImage(image);  // gives up the table held before
        const int opened = smbiosOpen();
        zuvtest::writeFile(smbiosDevicePath, "");  // a second open keeps the table held
        EXPECT_EQ(opened == 0 && smbiosOpen() == 0 ? dump(type) : "open " + dump(1), expected) << name;
    }
    installImage(good);
    void* table = nullptr;
    EXPECT_EQ(smbiosOpen() + smbiosGetRecords(9, &table, nullptr), 0) << "count may be null";
    free(table);
    Bytes structure = {2, 4, 0, 0, 'p', 0, 'a', 0x7f, 'b', 0x80, 0, 0};  // outside the table held
    auto* header = reinterpret_cast<smbiosHeader*>(structure.data());
    for (int index : {0, 2, 3})
        EXPECT_STREQ(smbiosGetString(header, 4, index), index == 2 ? "a.b." : "Undefined") << index;
    EXPECT_EQ(structure[7], '.') << "replaced in place";
    const std::pair<uint16_t, const char*> uuids[] = {{0x11D0, "04030201-0605-11d0-0809-0a0b0c0d0e0f"},
                                                      {0xFFFF, "04030201-0605-ffff-0809-0a0b0c0d0e0f"},
                                                      {0xF031, "01020304-0506-31f0-0809-0a0b0c0d0e0f"}};
    for (const auto& [data3, text] : uuids) {
        const uint8_t bytes[16] = {1, 2, 3, 4, 5, 6, uint8_t(data3), uint8_t(data3 >> 8), 8, 9, 10, 11, 12, 13, 14, 15};
        EXPECT_EQ(smbiosUuidText(bytes), text);
    }
}

TEST(EventResolver, EachPlatformResolvesExactlyItsTableWithNumbersCutTo16Bits) {
    // The event id of each internal number from 0 to 50, 0 where there is none.
    std::array<uint32_t, 51> preSph = {0,    0,    434,  435,  356,  359,  360,  397,  398,  835,  837,  836,  540,
                                       538,  539,  383,  384,  385,  386,  388,  390,  1391, 681,  683,  1385, 1387,
                                       1388, 680,  678,  1384, 1390, 708,  1138, 1139, 1150, 1501, 1152, 1148, 1151,
                                       1179, 1180, 1181, 1182, 1183, 1337, 1338, 1441, 1442, 1443, 0,    0};
    std::array<uint32_t, 51> sph = preSph;
    sph[35] = 1978, sph[46] = 1750, sph[47] = 1751, sph[48] = 1752, sph[49] = 1968, sph[50] = 1969;
    IELEventMap::IELEventPreSPH preSphResolver;
    IELEventMap::IELEventSPH sphResolver;
    for (auto [resolver, ids] : {std::make_pair<IELEventResolver*>(&preSphResolver, preSph.data()),
                                 std::make_pair<IELEventResolver*>(&sphResolver, sph.data())}) {
        for (int number = -3; number <= 60; ++number) {
            const int32_t wrapped = number + 65536 * (number % 3);
            if (number >= 0 && number <= 50 && ids[number] != 0)
                EXPECT_EQ(resolver->resolve(wrapped), ids[number]) << number;
            else
                EXPECT_EQ(thrown([&] { resolver->resolve(wrapped); }), "std::runtime_error: IEL Event Not Matching")
                    << number;
        }
    }
    EXPECT_EQ(IELEventMap::preSPHEventTable().size(), 47u);
    EXPECT_EQ(IELEventMap::sphEventTable().size(), 49u);
}

// The answers of the predicates, in the order 2, 4, 0/1, 2/4, 0/1/2, 0/1/2/4.
static std::string predicates() {
    return std::to_string(isPlatform2()) + std::to_string(isPlatform4()) + std::to_string(isPlatform0Or1()) +
           std::to_string(isPlatform2Or4()) + std::to_string(isPlatform0Or1Or2()) +
           std::to_string(isPlatform0Or1Or2Or4());
}

TEST(PlatformServices, RecordAndCachedCodeFollowTheFamilyAndTheKernelLine) {
    vmwaretest::FakeHostSystem host;
    // Family, kernel name and release; the platform code, the predicates' answers, the resource managers.
    const std::tuple<const char*, const char*, const char*, int32_t, const char*, std::vector<int32_t>> cases[] = {
        {"PLATFAMILY00004", "VMkernel", "8.0.2", 4, "010101", {8, 1, 0, 2, 3, 4, 5}},
        {"PLATFAMILY00001", "VMkernel", "7.0.3", 0, "001011", {1, 0, 2, 3, 4, 5}},
        {"PLATFAMILY00002", "VMkernel", "9.0.0", 1, "001011", {8, 1, 0, 2, 3, 4, 5}},
        {"PLATFAMILY00003", "Linux VMkernel", "8.0", 2, "100111", {6, 99, 8, 8, 1, 0, 2, 3, 4, 5}},
        {"platfamily00004", "Linux Windows VMkernel 9.0", "8.0", -1, "000000", {6, 99, 8, 8, 8, 1, 0, 2, 3, 4, 5}},
        {"PLATFAMILY000010", "Windows", "8.0", -1, "000000", {8, 1, 0, 2, 3, 4, 5}},
        {"PLATFAMILY0000", "vmkernel linux windows", "8.0", -1, "000000", {1, 0, 2, 3, 4, 5}},
    };
    for (const auto& [family, kernel, release, code, answers, ids] : cases) {
        installSmbios(family);
        host.sysname = kernel;
        host.release = release;
        storeCachedPlatformCode(-1);
        std::unique_ptr<zuvPlatformServices> services = getPlatformServices(1);
        EXPECT_EQ(std::to_string(services->getPlatform()) + " " + predicates(), std::to_string(code) + " " + answers);
        EXPECT_EQ(services->getFamily() + ", " + services->getSmbios()->getManufacturer(),
                  family + std::string(", Zuv Test Systems"));
        EXPECT_EQ(services->getEventResolver()->resolve(46), code == 4 ? 1750u : 1441u) << "SPH only for 4";
        EXPECT_EQ(services->getResourceManagers(), ids) << kernel << " " << release;
    }
    const auto lines = zuvtest::logMessages(zuvtest::kDebugLog, "ZUV_PLATFORM_SERVICE_BUILDER");
    EXPECT_EQ(Strings(lines.begin(), lines.begin() + 2),
              (Strings{"Building the Resource Manager List applicable to the Environment",
                       "Target OS [VMkernel esx01 8.0.2 #1 SMP Release build-22380479 x86_64]"}));
    installSmbios("PLATFAMILY00002");  // the last family was unknown: asked again
    EXPECT_TRUE(isPlatform0Or1());
    installSmbios("");  // known: kept without asking
    EXPECT_TRUE(isPlatform0Or1Or2());
    storeCachedPlatformCode(3);  // no predicate knows code 3
    EXPECT_EQ(predicates(), "000000");
    storeCachedPlatformCode(-1);
    EXPECT_EQ(thrown(getCachedPlatformCode), "std::runtime_error: Couldnot Fetch the Platform details");
    EXPECT_EQ(thrown([] { getPlatformServices(1); }), "std::runtime_error: Couldnot Fetch the Platform details");
    EXPECT_THROW(SMBIOSVMware().getManufacturer(), smbios_exceptions::not_initialized);
}
