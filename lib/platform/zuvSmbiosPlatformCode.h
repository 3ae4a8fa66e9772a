#pragma once
// Platform codes by SMBIOS family string. Code 3 is not assigned.

#include <cstdint>
#include <string>

constexpr int32_t zuvPlatformCodeUnknown = -1;

// The code of a family string, compared exactly; zuvPlatformCodeUnknown for any other text.
int32_t zuvPlatformCodeOfFamily(const std::string& family);
