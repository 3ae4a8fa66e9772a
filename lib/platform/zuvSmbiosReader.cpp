// The SMBIOS reader. The table lives in a 64 KiB buffer that the module owns; every walk is
// bounded by the table's end. From one structure to the next the walk adds the length byte
// to the start, whatever it says, and looks for the pair of NUL bytes that ends the string
// set; a structure whose pair doesn't lie inside the table ends the walk.

#include "platform/zuvSmbiosReader.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "config/zuvSyslog.h"
#include "platform/zuvSmbiosUuid.h"

namespace {

int smbiosInitialized = 0;
uint8_t* smbiosBuffer = nullptr;
uint8_t* smbiosTable = nullptr;
int smbiosTableLength = 0;
pthread_mutex_t smbiosMutex;

const char kUndefined[] = "Undefined";

// Entry point fields used here (SMBIOS 2.x, 32-bit entry point).
constexpr int kEntryLengthOffset = 5;
constexpr int kTableLengthOffset = 0x16;

uint16_t le16(const uint8_t* p) { return uint16_t(p[0] | p[1] << 8); }

// One structure of the table: formatted area from start, string set up to next.
struct Span {
    uint8_t* start;
    uint8_t* next;
    // Byte k of the structure, string set included; 0 behind its end.
    uint8_t at(int k) const { return k < next - start ? start[k] : 0; }
    uint16_t at16(int k) const { return uint16_t(at(k) | at(k + 1) << 8); }
};

// Moves cursor to the next structure; false at the end of the table or at a structure not
// closed inside it. A length below 4 is no header at all, but the walk still goes on from
// there: the pair is searched from start + length, which may be the type byte itself.
bool nextStructure(uint8_t*& cursor, uint8_t* end, Span& span) {
    if (end - cursor < 2) return false;
    const int length = cursor[1];
    if (length > end - cursor) return false;
    uint8_t* p = cursor + length;
    while (end - p >= 2 && !(p[0] == 0 && p[1] == 0)) ++p;
    if (end - p < 2) return false;
    span.start = cursor;
    span.next = p + 2;
    cursor = span.next;
    return true;
}

// String number index of a structure, searched no further than end (null: no bound).
const char* stringOf(uint8_t* header, int formattedLength, int index, const uint8_t* end) {
    if (index <= 0 || formattedLength < 0) return kUndefined;
    auto past = [end](const uint8_t* p) { return end != nullptr && p >= end; };
    uint8_t* s = header + formattedLength;
    for (int skipped = 1; skipped < index; ++skipped) {
        if (past(s) || *s == 0) return kUndefined;
        while (!past(s) && *s != 0) ++s;
        if (past(s)) return kUndefined;
        ++s;
    }
    if (past(s) || *s == 0) return kUndefined;
    uint8_t* e = s;
    while (!past(e) && *e != 0) ++e;
    if (past(e)) return kUndefined;  // not terminated inside the table
    for (uint8_t* c = s; c < e; ++c) {
        if (*c < 0x20 || *c > 0x7E) *c = '.';
    }
    return reinterpret_cast<const char*>(s);
}

// Copies a text into a fixed field, cut so that the NUL always fits.
void copyField(char* field, size_t width, const char* text) {
    size_t n = strnlen(text, width - 1);
    memcpy(field, text, n);
    field[n] = '\0';
}

const char* stringAt(const Span& span, int byteOffset) {
    return stringOf(span.start, span.start[1], span.at(byteOffset), span.next);
}

void decodeSlot(const Span& s, smbiosSystemSlot& r) {
    r.recordType = s.at(0);
    r.recordLength = s.at(1);
    r.handle = s.at16(2);
    copyField(r.designation, sizeof r.designation, stringAt(s, 4));
    r.type = s.at(5);
    r.busDataWidth = s.at(6);
    r.currentUsage = s.at(7);
    r.length = s.at(8);
    r.id = s.at16(9);
    r.characteristics1 = s.at(11);
    r.characteristics2 = s.at(12);
    if (r.recordLength >= 14) {
        r.segmentGroupNum = s.at16(13);
        r.busNum = s.at(15);
        r.devFuncNum = s.at(16);
    }
}

void decodeOnboard(const Span& s, smbiosOnboardDevice& r) {
    r.recordType = s.at(0);
    r.recordLength = s.at(1);
    r.handle = s.at16(2);
    copyField(r.referenceDesignation, sizeof r.referenceDesignation, stringAt(s, 4));
    r.deviceType = s.at(5) & 0x7F;
    r.deviceTypeInstance = s.at(6);
    r.segmentGroupNum = s.at16(7);
    r.busNum = s.at(9);
    r.functionNum = s.at(10) & 0x07;
    r.deviceNum = s.at(10) >> 3;
}

void decodeSystemInfo(const Span& s, smbiosSystemInfo& r) {
    r.recordType = s.at(0);
    r.recordLength = s.at(1);
    r.handle = s.at16(2);
    if (r.recordLength > 7) {
        copyField(r.manufacturer, sizeof r.manufacturer, stringAt(s, 4));
        copyField(r.productName, sizeof r.productName, stringAt(s, 5));
        copyField(r.version, sizeof r.version, stringAt(s, 6));
        copyField(r.serialNumber, sizeof r.serialNumber, stringAt(s, 7));
    }
    if (r.recordLength > 24) {
        uint8_t bytes[16];
        for (int i = 0; i < 16; ++i) bytes[i] = s.at(8 + i);
        copyField(r.uuid, sizeof r.uuid, smbiosUuidText(bytes).c_str());
        r.wakeUpType = s.at(24);
    }
    if (r.recordLength > 26) {
        copyField(r.skuNumber, sizeof r.skuNumber, stringAt(s, 25));
        copyField(r.family, sizeof r.family, stringAt(s, 26));
    } else if (r.recordLength > 24) {
        copyField(r.skuNumber, sizeof r.skuNumber, ".");
    }
}

size_t recordSize(int type) {
    switch (type) {
        case 1: return sizeof(smbiosSystemInfo);
        case 9: return sizeof(smbiosSystemSlot);
        case 41: return sizeof(smbiosOnboardDevice);
        default: return 0;
    }
}

void logAllocationFailure(int type) {
    switch (type) {
        case 9: zuvSyslog(LOG_WARNING, "Malloc failed for SystemSlots table with pSlotTbl : 0x%x ", 0); break;
        case 41:
            zuvSyslog(LOG_WARNING, "Malloc failed for Onboard Devices Extended Info table with pDevice : 0x%x", 0);
            break;
        default: zuvSyslog(LOG_WARNING, "Malloc failed for SystemInfo table with SystemInfo : 0x%x ", 0); break;
    }
}

void forgetTable() {
    free(smbiosBuffer);
    smbiosBuffer = nullptr;
    smbiosTable = nullptr;
    smbiosTableLength = 0;
}

// Takes a buffer holding bytesRead bytes of the device and finds the table in it; the
// module owns the buffer afterwards in every case.
int adoptBuffer(uint8_t* buffer, long bytesRead) {
    smbiosBuffer = buffer;
    if (bytesRead < 1) {
        forgetTable();
        return -1;
    }
    long anchor = -1;
    for (long offset = 0; offset + 4 <= bytesRead; offset += 4) {
        if (memcmp(buffer + offset, "_SM_", 4) == 0) {
            anchor = offset;
            break;
        }
    }
    // The entry point must hold its table length field inside what was read.
    if (anchor < 0 || anchor + kTableLengthOffset + 2 > bytesRead) {
        forgetTable();
        return -1;
    }
    long tableOffset = anchor + buffer[anchor + kEntryLengthOffset];
    long tableLength = le16(buffer + anchor + kTableLengthOffset);
    if (tableOffset > bytesRead) {
        forgetTable();
        return -1;
    }
    if (tableOffset + tableLength > bytesRead) {
        zuvSyslog(LOG_WARNING, "SMBIOS table of %ld bytes cut to the %ld bytes read", tableLength,
                  bytesRead - tableOffset);
        tableLength = bytesRead - tableOffset;
    }
    smbiosTable = buffer + tableOffset;
    smbiosTableLength = int(tableLength);
    smbiosInitialized = 1;
    pthread_mutex_init(&smbiosMutex, nullptr);
    return 0;
}

}  // namespace

int smbiosOpen() {
    if (smbiosInitialized) return 0;
    int fd = open(smbiosDevicePath, O_RDONLY | O_SYNC);
    if (fd < 0) return -1;
    auto* buffer = static_cast<uint8_t*>(calloc(1, smbiosBufferSize));
    if (buffer == nullptr) {
        close(fd);
        return -1;
    }
    ssize_t bytesRead = read(fd, buffer, smbiosBufferSize);
    close(fd);
    return adoptBuffer(buffer, long(bytesRead));
}

int smbiosOpenImage(const void* image, unsigned long size) {
    if (smbiosInitialized) return 0;
    auto* buffer = static_cast<uint8_t*>(calloc(1, smbiosBufferSize));
    if (buffer == nullptr) return -1;
    if (size > unsigned(smbiosBufferSize)) size = smbiosBufferSize;
    if (size > 0) memcpy(buffer, image, size);
    return adoptBuffer(buffer, long(size));
}

void smbiosClose() {
    if (!smbiosInitialized) return;
    forgetTable();
    smbiosInitialized = 0;
    pthread_mutex_destroy(&smbiosMutex);
}

int smbiosGetRecords(int type, void** table, unsigned* count) {
    if (table != nullptr) *table = nullptr;
    if (count != nullptr) *count = 0;
    if (!smbiosInitialized || table == nullptr) return -1;

    pthread_mutex_lock(&smbiosMutex);
    uint8_t* const end = smbiosTable + smbiosTableLength;
    Span span{};
    unsigned found = 0;
    for (uint8_t* cursor = smbiosTable; nextStructure(cursor, end, span);) {
        if (span.start[0] == type) ++found;
    }
    size_t size = recordSize(type);
    if (found == 0 || size == 0) {
        pthread_mutex_unlock(&smbiosMutex);
        return -1;
    }
    auto* records = static_cast<uint8_t*>(calloc(found, size));
    if (records == nullptr) {
        logAllocationFailure(type);
        pthread_mutex_unlock(&smbiosMutex);
        return -1;
    }
    if (count != nullptr) *count = found;

    unsigned filled = 0;
    for (uint8_t* cursor = smbiosTable; filled < found && nextStructure(cursor, end, span);) {
        if (span.start[0] != type) continue;
        uint8_t* record = records + size_t(filled++) * size;
        switch (type) {
            case 1: decodeSystemInfo(span, *reinterpret_cast<smbiosSystemInfo*>(record)); break;
            case 9: decodeSlot(span, *reinterpret_cast<smbiosSystemSlot*>(record)); break;
            default: decodeOnboard(span, *reinterpret_cast<smbiosOnboardDevice*>(record)); break;
        }
    }
    *table = records;
    pthread_mutex_unlock(&smbiosMutex);
    return 0;
}

const char* smbiosGetString(smbiosHeader* header, int formattedLength, int index) {
    auto* start = reinterpret_cast<uint8_t*>(header);
    const uint8_t* end = nullptr;
    if (smbiosInitialized && start >= smbiosTable && start < smbiosTable + smbiosTableLength) {
        end = smbiosTable + smbiosTableLength;
    }
    return stringOf(start, formattedLength, index, end);
}

void smbiosPrintSlots(const smbiosSystemSlot* table, int count) {
    for (int i = 0; table != nullptr && i < count; ++i) {
        const smbiosSystemSlot& s = table[i];
        printf("System Slot record #%d  (Type %d)\n", i + 1, 9);
        printf("   Handle              : 0x%04X\n", unsigned(s.handle));
        printf("   Length              : %u\n", unsigned(s.recordLength));
        printf("   designation         : %.*s\n", int(sizeof s.designation), s.designation);
        printf("   type                : %u\n", unsigned(s.type));
        printf("   busDataWidth        : %u\n", unsigned(s.busDataWidth));
        printf("   currentUsage        : %u\n", unsigned(s.currentUsage));
        printf("   length              : %u\n", unsigned(s.length));
        printf("   id                  : %u\n", unsigned(s.id));
        printf("   characteristics1    : 0x%x\n", unsigned(s.characteristics1));
        printf("   characteristics2    : 0x%x\n", unsigned(s.characteristics2));
        printf("   segmentGroupNum     : 0x%x\n", unsigned(s.segmentGroupNum));
        printf("   busNum              : 0x%x\n", unsigned(s.busNum));
        printf("   devFuncNum          : 0x%x\n", unsigned(s.devFuncNum));
        printf("\n");
    }
}
