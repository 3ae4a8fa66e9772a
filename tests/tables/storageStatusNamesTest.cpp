// The storage vocabulary, text by text.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "tables/zuvStorageStatusNames.h"

namespace {

template <std::size_t n>
std::vector<std::string> texts(const char* const (&array)[n]) {
    return std::vector<std::string>(std::begin(array), std::end(array));
}

}  // namespace

TEST(StorageStatusNames, EveryArrayHoldsItsTextsInOrder) {
    EXPECT_EQ(texts(healthNames), (std::vector<std::string>{"Unknown", "Critical", "OK", "Warning"}));
    EXPECT_EQ(texts(statusNames), (std::vector<std::string>{"Unknown",
                                                            "Bypassed",
                                                            "Cancel",
                                                            "Cancel/Recovery",
                                                            "Created",
                                                            "Degraded",
                                                            "Deleted",
                                                            "Deleted/Recovery",
                                                            "Diagnostic mode",
                                                            "Disabled",
                                                            "Down",
                                                            "Error",
                                                            "Failed",
                                                            "Initializing",
                                                            "Linkdown",
                                                            "Loopback",
                                                            "Offline",
                                                            "Online",
                                                            "Optimal",
                                                            "Other",
                                                            "Partially degraded",
                                                            "Predictive failure",
                                                            "Rebuild",
                                                            "Recovering",
                                                            "Recovery",
                                                            "Running",
                                                            "Unconfigured bad"}));
    EXPECT_EQ(texts(protocolNames), (std::vector<std::string>{"Fibre Channel", "Parallel SCSI", "SSA", "IEEE 1394",
                                                              "SCSI RDMA Protocol", "iSCSI", "SAS", "ADT", "ATA", "UAS",
                                                              "SOP", "0xb", "0xc", "0xd", "0xe", "0xf"}));
    EXPECT_EQ(texts(adapterAttributePaths),
              (std::vector<std::string>{"/device/../device", "/device/../vendor", "/device/../subsystem_device",
                                        "/device/../subsystem_vendor", "/board_tracer", "/unique_id", "/version_fw",
                                        "/version_bios", "/model", "/state", "/proc_name", "/firmware_revision"}));
    EXPECT_EQ(texts(adapterParentAttributePaths),
              (std::vector<std::string>{"/device/../../subsystem_device", "/device/../../subsystem_vendor",
                                        "/device/../../vendor", "/device/../../device"}));
}

TEST(StorageStatusNames, StatusNamesAreAlphabeticalBehindUnknown) {
    const auto names = texts(statusNames);
    EXPECT_TRUE(std::is_sorted(names.begin() + 1, names.end()));
}
