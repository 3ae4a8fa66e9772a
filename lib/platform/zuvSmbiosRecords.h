#pragma once
// Plain records decoded from SMBIOS structures (DMTF DSP0134). Packed, host byte order,
// text fields NUL-terminated and cut to their width. Arrays of them are allocated with
// calloc by smbiosGetRecords, so a field that a short structure doesn't reach stays zero.

#include <cstdint>

// The four bytes that open every structure of the table.
struct __attribute__((packed)) smbiosHeader {
    uint8_t type;
    uint8_t length;  // formatted area, header included
    uint16_t handle;
};

// Type 9, system slot.
struct __attribute__((packed)) smbiosSystemSlot {
    uint8_t recordType;
    uint8_t recordLength;
    uint16_t handle;
    char designation[128];
    uint8_t type;
    uint8_t busDataWidth;
    uint8_t currentUsage;
    uint8_t length;
    uint16_t id;
    uint8_t characteristics1;
    uint8_t characteristics2;
    uint16_t segmentGroupNum;
    uint8_t busNum;
    uint8_t devFuncNum;
};

// Type 41, onboard devices extended information.
struct __attribute__((packed)) smbiosOnboardDevice {
    uint8_t recordType;
    uint8_t recordLength;
    uint16_t handle;
    char referenceDesignation[128];
    uint8_t deviceType;  // without the enabled bit
    uint8_t deviceTypeInstance;
    uint16_t segmentGroupNum;
    uint8_t busNum;
    uint8_t functionNum : 3;
    uint8_t deviceNum : 5;
};

// Type 1, system information.
struct __attribute__((packed)) smbiosSystemInfo {
    uint8_t recordType;
    uint8_t recordLength;
    uint16_t handle;
    char manufacturer[64];
    char productName[128];
    char version[128];
    char serialNumber[128];
    char uuid[255];
    uint8_t wakeUpType;
    char skuNumber[128];
    char family[64];
};

static_assert(sizeof(smbiosHeader) == 4, "structure header is 4 bytes");
static_assert(sizeof(smbiosSystemSlot) == 144, "slot record is 144 bytes");
static_assert(sizeof(smbiosOnboardDevice) == 138, "onboard device record is 138 bytes");
static_assert(sizeof(smbiosSystemInfo) == 900, "system information record is 900 bytes");
