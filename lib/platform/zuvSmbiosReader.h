#pragma once
// The SMBIOS reader: one structure table per process, read from the host's SMBIOS device
// into a buffer the module owns. Plain functions; status results are 0 and -1. Nothing
// here throws, and no operation reads outside the table or writes outside a field.

#include "platform/zuvSmbiosRecords.h"

// The device that offers the SMBIOS entry point and table on an ESXi host.
constexpr const char* smbiosDevicePath = "/vmfs/devices/char/mem/smbios";
constexpr int smbiosBufferSize = 0x10000;

// Reads the table; 0 also when one is held already, -1 when none could be read.
int smbiosOpen();
// smbiosOpen with the image given instead of read from the device (at most the first
// smbiosBufferSize bytes are taken): for tools and fuzzing where there is no device.
int smbiosOpenImage(const void* image, unsigned long size);
// Gives the held table up; harmless without one.
void smbiosClose();
// Allocates (calloc) and fills the record array of type 1, 9 or 41. count may be null.
// 0 on success, the caller frees *table with free(); -1 with *table null and *count 0.
int smbiosGetRecords(int type, void** table, unsigned* count);
// Text of string number index of a structure: "Undefined" for 0, a number past the set or
// an empty string. Bytes outside 0x20..0x7E are replaced by '.' in the table itself.
const char* smbiosGetString(smbiosHeader* header, int formattedLength, int index);
// Prints slot records to standard output, numbered from 1.
void smbiosPrintSlots(const smbiosSystemSlot* table, int count);
