// libFuzzer harness over what the host's tools print: popen() and system() are replaced, each command
// prints the input behind its first byte (appended to the scratch file named behind ">> " for system),
// and fails when that byte's top bit is set. A scratch file left behind or a wrong result is a finding.
#include <cstdio>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include "fuzzHarness.h"
#include "platform/zuvPlatformCode.h"
#include "utils/zuvUtils.h"
#include "vmware/zuvVMwareOSUtils.h"
#include "zuvSandbox.h"

namespace {

std::string output;
int exitStatus = 0;

void readAll() {
    zuvUtils utils;
    zuvVMwareOSUtils os;
    // The two localcli listings; the second keeps only adapters of the first.
    zuvUtils::fcTopologyMap.clear();
    zuvUtils::fcNameMap.clear();
    utils.collectFcTopology();
    utils.collectFcNames();
    for (const auto& entry : zuvUtils::fcTopologyMap) utils.getFcLocationFields(entry.first);
    for (const auto& entry : zuvUtils::fcNameMap)
        if (!utils.isFcTopologyName(entry.second)) abort();
    const size_t figures = os.getMemoryFigures().size();
    if (figures != 0 && figures != 2) abort();
    time_t first = 0, second = 0;
    try {  // a field that is no number throws std::invalid_argument, as the parser's contract says
        utils.getBootTimes(&first, &second);
        utils.getLastShutdownTime(&first);
    } catch (const std::invalid_argument&) {
    }
    zuvUtils::osVersion.clear();
    zuvUtils::osName.clear();
    utils.getOSVersion();
    utils.getOSName();
    os.getOSVersion();
    os.getOSProduct();
    std::string pci;
    utils.getAdapterPciString("vmhba1", pci);
    os.getPciIds("0000:03:00.0");
    os.getPciSubIds("0000:03:00.0");
    zuvUtils::geoIdLocationMap["0000:03:00.0"] = output;
    utils.getGeoIdFromDesignation(output);
    utils.decodeGeoId("0000:03:00.0");
}

}  // namespace

extern "C" FILE* popen(const char*, const char*) { return fmemopen(output.data(), output.size(), "r"); }

extern "C" int pclose(FILE* stream) {
    std::fclose(stream);
    return exitStatus;
}

extern "C" int system(const char* command) {
    const char* redirect = std::strstr(command, ">> ");
    if (redirect == nullptr) abort();  // every reader here appends to a scratch file
    if (!(std::ofstream(redirect + 3, std::ios::app | std::ios::binary) << output)) abort();
    return exitStatus;
}

extern "C" void zuvFuzzHarnessSetUp() { storeCachedPlatformCode(2); }  // the decoder of the r...u..p.i.. form

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    uint8_t steer = 0;
    if (!splitSteering(data, size, &steer, &output)) return 0;
    exitStatus = (steer & 0x80) != 0 ? 256 : 0;
    readAll();
    for (const char* scratch : {"/tmp/zuvboot.log", "/opt/kelzuv/tmp/fc_topology.txt", "/opt/kelzuv/tmp/fc_name.txt",
                                "/opt/kelzuv/tmp/zuv-mem.txt"})
        if (zuvtest::fileExists(scratch)) abort();
    return 0;
}
