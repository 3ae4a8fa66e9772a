#include "tables/zuvStorageStatusNames.h"

const char* const healthNames[4] = {"Unknown", "Critical", "OK", "Warning"};

const char* const statusNames[27] = {
    "Unknown",
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
    "Unconfigured bad",
};

const char* const protocolNames[16] = {
    "Fibre Channel", "Parallel SCSI", "SSA", "IEEE 1394", "SCSI RDMA Protocol",
    "iSCSI",         "SAS",           "ADT", "ATA",       "UAS",
    "SOP",           "0xb",           "0xc", "0xd",       "0xe",
    "0xf",
};

const char* const adapterAttributePaths[12] = {
    "/device/../device",
    "/device/../vendor",
    "/device/../subsystem_device",
    "/device/../subsystem_vendor",
    "/board_tracer",
    "/unique_id",
    "/version_fw",
    "/version_bios",
    "/model",
    "/state",
    "/proc_name",
    "/firmware_revision",
};

const char* const adapterParentAttributePaths[4] = {
    "/device/../../subsystem_device",
    "/device/../../subsystem_vendor",
    "/device/../../vendor",
    "/device/../../device",
};
