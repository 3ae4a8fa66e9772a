#pragma once
#define ZUV_IPMI_TAG "ZUV_IPMI_SERVICE"
