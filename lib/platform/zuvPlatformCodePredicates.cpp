#include "platform/zuvPlatformCode.h"

#include <initializer_list>

#include "platform/zuvPlatformCodeStore.h"
#include "platform/zuvSmbiosPlatformCode.h"

std::atomic<int32_t> zuvCachedPlatformCodeValue{zuvPlatformCodeUnknown};

namespace {

// Each predicate asks for the code once per code it tests, so a platform that stays unknown
// is asked again each time, as getCachedPlatformCode() promises.
bool codeIsOneOf(std::initializer_list<int32_t> codes) {
    for (int32_t code : codes) {
        if (getCachedPlatformCode() == code) return true;
    }
    return false;
}

}  // namespace

void storeCachedPlatformCode(int32_t code) { zuvCachedPlatformCodeValue.store(code, std::memory_order_relaxed); }

bool isPlatform2() { return codeIsOneOf({2}); }
bool isPlatform4() { return codeIsOneOf({4}); }
bool isPlatform0Or1() { return codeIsOneOf({0, 1}); }
bool isPlatform2Or4() { return codeIsOneOf({2, 4}); }
bool isPlatform0Or1Or2() { return codeIsOneOf({0, 1, 2}); }
bool isPlatform0Or1Or2Or4() { return codeIsOneOf({0, 1, 2, 4}); }
