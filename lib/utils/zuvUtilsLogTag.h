#pragma once
// The log tag of zuvUtils.

constexpr const char* kUtilsLogTag = "ZUV_UTILS";
