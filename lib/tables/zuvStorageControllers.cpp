#include "tables/zuvStorageControllers.h"

#include "platform/zuvPlatformCode.h"
#include "tables/zuvTablesInitOrder.h"

namespace zuvSASRM {

// Built in this order, before the rows that copy them. Each closure only forwards, so
// building the table asks nothing of the platform.
ZUV_BUILT_FIRST const std::function<bool()> onPlatform0Or1Or2 = [] { return isPlatform0Or1Or2(); };
ZUV_BUILT_FIRST const std::function<bool()> onPlatform0Or1 = [] { return isPlatform0Or1(); };
ZUV_BUILT_FIRST const std::function<bool()> onPlatform2 = [] { return isPlatform2(); };
ZUV_BUILT_FIRST const std::function<bool()> onPlatform4 = [] { return isPlatform4(); };
ZUV_BUILT_FIRST const std::function<bool()> onPlatform2Or4 = [] { return isPlatform2Or4(); };
ZUV_BUILT_FIRST const std::function<bool()> onPlatform0Or1Or2Or4 = [] { return isPlatform0Or1Or2Or4(); };

namespace {

// The server maker's part numbers, option numbers, product names and subsystem ids of its
// own controller products are not part of this source tree. Their rows keep the chip, the
// platform test and the class, with empty texts and subsystem ids 0, so that the row order
// and the platform split stay in place for when the maker's data is filled in. The look-up
// never finds such a row: it would hide the chip's row in general behind an empty name.
constexpr uint16_t notGiven = 0;
constexpr const char* notGivenText = "";

const char* const c600SataRaid = "Intel C600/X79 series chipset SATA RAID Controller";
const char* const c610SSataRaid = "Intel C610/X99 series chipset sSATA RAID Controller";

}  // namespace

ZUV_BUILT_FIRST const zuvStorageControllerRecord storageControllers[storageControllerCount] = {
    // 1 to 4: chipset SATA RAID, chips in general.
    {onPlatform0Or1Or2, 0x8086, 0x2826, 0, 0, "", "", chipsetSataRaid, c600SataRaid},
    {onPlatform4, 0x8086, 0x2827, 0, 0, "", "", chipsetSataRaid, c610SSataRaid},
    {onPlatform4, 0x8086, 0x1bf2, 0, 0, "", "", chipsetSataRaid, c610SSataRaid},
    {onPlatform4, 0x8086, 0xa1d2, 0, 0, "", "", chipsetSataRaid, c610SSataRaid},
    // 5, 6: products on the SAS-3 3108 (6 is 5 in JBOD mode, with a subsystem device id of
    // its own); 7: the chip in general.
    {onPlatform0Or1, 0x1000, 0x005d, notGiven, notGiven, notGivenText, notGivenText, megaRaid, notGivenText},
    {onPlatform0Or1, 0x1000, 0x005d, notGiven, notGiven, notGivenText, notGivenText, megaRaid, notGivenText},
    {onPlatform0Or1, 0x1000, 0x005d, 0, 0, "", "", megaRaid, "Broadcom / LSI MegaRAID SAS-3 3108 [Invader]"},
    // 8, 9: products on the SAS39xx; 10: the chip in general.
    {onPlatform2, 0x1000, 0x10e2, notGiven, notGiven, notGivenText, notGivenText, megaRaid, notGivenText},
    {onPlatform2, 0x1000, 0x10e2, notGiven, notGiven, notGivenText, notGivenText, megaRaid, notGivenText},
    {onPlatform2, 0x1000, 0x10e2, 0, 0, "", "", megaRaid, "Broadcom / LSI MegaRAID 12GSAS/PCIe Secure SAS39xx"},
    // 11 to 13: products on chip 1000:00a5, which has no row in general.
    {onPlatform4, 0x1000, 0x00a5, notGiven, notGiven, notGivenText, notGivenText, megaRaid, notGivenText},
    {onPlatform4, 0x1000, 0x00a5, notGiven, notGiven, notGivenText, notGivenText, megaRaid, notGivenText},
    {onPlatform4, 0x1000, 0x00a5, notGiven, notGiven, notGivenText, notGivenText, megaRaid, notGivenText},
    // 14 to 22: Smart Storage products (15 and 16 share ids, part number and name, and
    // differ in the platform and the option number); 23: the chip in general.
    {onPlatform0Or1Or2, 0x9005, 0x028f, notGiven, notGiven, notGivenText, notGivenText, smartStorage, notGivenText},
    {onPlatform0Or1, 0x9005, 0x028f, notGiven, notGiven, notGivenText, notGivenText, smartStorage, notGivenText},
    {onPlatform2, 0x9005, 0x028f, notGiven, notGiven, notGivenText, notGivenText, smartStorage, notGivenText},
    {onPlatform2, 0x9005, 0x028f, notGiven, notGiven, notGivenText, notGivenText, smartStorage, notGivenText},
    {onPlatform2, 0x9005, 0x028f, notGiven, notGiven, notGivenText, notGivenText, smartStorage, notGivenText},
    {onPlatform2Or4, 0x9005, 0x028f, notGiven, notGiven, notGivenText, notGivenText, smartStorage, notGivenText},
    {onPlatform4, 0x9005, 0x028f, notGiven, notGiven, notGivenText, notGivenText, smartStorage, notGivenText},
    {onPlatform4, 0x9005, 0x028f, notGiven, notGiven, notGivenText, notGivenText, smartStorage, notGivenText},
    {onPlatform4, 0x9005, 0x028f, notGiven, notGiven, notGivenText, notGivenText, smartStorage, notGivenText},
    {onPlatform0Or1Or2Or4, 0x9005, 0x028f, 0, 0, "", "", smartStorage,
     "Adaptec Smart Storage PQI 12G SAS/PCIe 3 Controller"},
    // 24: Volume Management Device, the chip in general.
    {onPlatform4, 0x8086, 0x28c0, 0, 0, "", "", volumeManagementDevice,
     "Intel Corporation Volume Management Device NVMe RAID Controller"},
};

}  // namespace zuvSASRM
