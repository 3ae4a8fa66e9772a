#pragma once
// Which resource managers apply to a host, by the host's kernel line (uname fields).
// Ids: 0 Fibre Channel, 1 host OS, 2 and 8 storage, 3 Ethernet, 4 NVMe, 5 GPU,
// 99 utilization, 6 for Linux hosts.

#include <cstdint>
#include <string>
#include <vector>

std::vector<int32_t> zuvResourceManagersForKernel(const std::string& kernelLine);
