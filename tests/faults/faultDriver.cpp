// Runs one file-writing operation of the library for the fault runs of run.sh and prints its
// result on one line ("threw: <text>" when it throws):
//   zuvFaultDriver state-init|state-stop|last-start|boot-times|fc|memory|log
#include <cstdio>
#include <ctime>
#include <exception>
#include <string>

#include "log/zuvLogger.h"
#include "utils/zuvUtils.h"
#include "vmware/zuvVMwareOSUtils.h"

int main(int argc, char** argv) {
    const std::string operation = argc > 1 ? argv[1] : "";
    zuvVMwareOSUtils os;
    zuvUtils utils;
    try {
        if (operation == "state-init" || operation == "state-stop") {
            os.updateStartStopFile(operation == "state-init" ? 0 : 1);
        } else if (operation == "last-start") {
            os.updateLastStart();
        } else if (operation == "boot-times") {
            time_t last = 0, previous = 0;
            const int result = utils.getBootTimes(&last, &previous);
            std::printf("%d %ld %ld\n", result, static_cast<long>(last), static_cast<long>(previous));
        } else if (operation == "fc") {
            utils.collectFcTopology();
            utils.collectFcNames();
            std::printf("%s %s\n", utils.getFcPciAddress("vmhba1").c_str(),
                        utils.getFcAdapterForNodeName("20:00:00:00:c9:00:00:01").c_str());
        } else if (operation == "memory") {
            for (double figure : os.getMemoryFigures()) std::printf("%.0f ", figure);
            std::printf("\n");
        } else if (operation == "log") {
            ZUV_LOG_ERROR("ZUV_FAULTS", "an error line");
            ZUV_LOG_DEBUG("ZUV_FAULTS", "a debug line");
        } else {
            std::fprintf(stderr, "unknown operation [%s]\n", operation.c_str());
            return 2;
        }
    } catch (const std::exception& e) {
        std::printf("threw: %s\n", e.what());
    }
    return 0;
}
