// Machine and free memory of the host, from one esxtop batch sample written to a scratch
// file. The sample is comma-separated: a row of column names, then a row of quoted values,
// each row ending in a comma, so the first field of the value row begins with a line feed.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "log/zuvLogger.h"
#include "utils/zuvScratchFile.h"
#include "vmware/zuvVMwareLogTag.h"
#include "vmware/zuvVMwareOSUtils.h"

namespace {

struct MemorySample {
    long machineMBytes = 0;
    long freeMBytes = 0;
};

// Reads the first value row under the header, field by field. Column numbers count from 1
// in each row; the count is reset once, at the start of the value row, so rows appended
// behind it count on beyond every column and are never read.
MemorySample parseSample(FILE* file) {
    MemorySample sample;
    long machineColumn = 0;
    long freeColumn = 0;
    long column = 0;
    bool inHeader = true;
    char* field = nullptr;
    size_t capacity = 0;
    while (getdelim(&field, &capacity, ',', file) != -1) {
        ++column;
        if (field[0] == '\n' && inHeader) {
            column = 1;
            inHeader = false;
            continue;
        }
        if (inHeader) {
            if (std::strstr(field, "Machine MBytes") != nullptr) machineColumn = column;
            if (std::strstr(field, "\\Memory\\Free MBytes") != nullptr) freeColumn = column;
        } else {
            // sscanf reads the leading digits and ignores what follows (a fraction); a field
            // without digits leaves the figure as it was.
            // NOLINTNEXTLINE(cert-err34-c)
            if (column == machineColumn) (void)std::sscanf(field, "\"%ld", &sample.machineMBytes);
            // NOLINTNEXTLINE(cert-err34-c)
            if (column == freeColumn) (void)std::sscanf(field, "\"%ld", &sample.freeMBytes);
        }
    }
    free(field);
    return sample;
}

}  // namespace

std::vector<double> zuvVMwareOSUtils::getMemoryFigures() {
    // The scratch file lives in a shared directory: a left-over file or a planted link at its
    // name is cleared and a fresh file made before the shell appends; removed on every way out.
    zuvScratchFile scratch(getInstallPath() + "/tmp/zuv-mem.txt");
    const std::string configPath = getInstallPath() + "/data/esxtopconf";
    const std::string command = "esxtop -c " + configPath + " -b -n 1 >> " + scratch.path();

    if (!scratch.prepare()) {
        ZUV_LOG_ERROR(kVMwareLogTag, "Unable to fetch physical memory information.");
        return {};
    }
    if (system(command.c_str()) != 0) {
        const int error = errno;
        if (!memoryErrorLogged)
            ZUV_LOG_ERROR(kVMwareLogTag, "Error occurred in fetching physical memory information : %s",
                          strerror(error));
        memoryErrorLogged = true;
        return {};
    }
    FILE* file = fopen(scratch.path().c_str(), "r");
    if (file == nullptr) {
        ZUV_LOG_ERROR(kVMwareLogTag, "Unable to fetch physical memory information.");
        return {};
    }
    const MemorySample sample = parseSample(file);
    (void)fclose(file);  // read only: nothing is lost when the close fails
    // Whole gigabytes: the megabytes are divided in integer arithmetic, truncated on purpose.
    return {static_cast<double>(sample.machineMBytes / 1024),  // NOLINT(bugprone-integer-division)
            static_cast<double>(sample.freeMBytes / 1024)};    // NOLINT(bugprone-integer-division)
}
