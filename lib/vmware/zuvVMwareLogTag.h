#pragma once
// Log tag of the VMware host layer.

constexpr const char* kVMwareLogTag = "VMWARE_OS_UTILS";
