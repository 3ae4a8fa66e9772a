#pragma once
// The platform code of the running host, kept once per process, and the predicates on it
// that the device tables and the GeoID decoder consult. Codes come from the SMBIOS family
// string: 0, 1, 2, 4, or -1 while unknown.
//
// The predicates are defined here, inline, and ask the code through a hook that the platform
// layer fills with getCachedPlatformCode before main. So the device tables, which carry the
// predicates in their rows, don't link the platform layer: a program such as zuvCli, which
// builds the tables but never evaluates them, loads none of it. A program that evaluates a
// predicate links the platform code cache (zuvCachedPlatformCode.cpp, linked by any call of
// getCachedPlatformCode or storeCachedPlatformCode); without it a predicate throws as when
// the platform can't be read.

#include <cstdint>
#include <initializer_list>
#include <stdexcept>

// The cached code. While it is unknown, each call builds the platform services, asks them
// for the platform and caches the answer; a platform that stays unknown is asked again at
// the next call. Throws std::runtime_error "Couldnot Fetch the Platform details" when the
// SMBIOS data can't be read.
int32_t getCachedPlatformCode();

// Sets the cached code, e.g. for a process that knows its platform without SMBIOS;
// -1 makes the next getCachedPlatformCode() ask the platform again.
void storeCachedPlatformCode(int32_t code);

// Where the predicates get the code: getCachedPlatformCode once the platform layer is in the
// process. Set during static initialisation, before any thread starts.
using zuvPlatformCodeSource = int32_t (*)();
inline zuvPlatformCodeSource zuvPlatformCodeSourceHook = nullptr;

namespace zuvPlatformCodeDetail {

// Asks the code once per code tested, so a platform that stays unknown is asked again each
// time, as getCachedPlatformCode() promises.
inline bool codeIsOneOf(std::initializer_list<int32_t> codes) {
    if (zuvPlatformCodeSourceHook == nullptr) throw std::runtime_error("Couldnot Fetch the Platform details");
    for (int32_t code : codes) {
        if (zuvPlatformCodeSourceHook() == code) return true;
    }
    return false;
}

}  // namespace zuvPlatformCodeDetail

inline bool isPlatform2() { return zuvPlatformCodeDetail::codeIsOneOf({2}); }
inline bool isPlatform4() { return zuvPlatformCodeDetail::codeIsOneOf({4}); }
inline bool isPlatform0Or1() { return zuvPlatformCodeDetail::codeIsOneOf({0, 1}); }
inline bool isPlatform2Or4() { return zuvPlatformCodeDetail::codeIsOneOf({2, 4}); }
inline bool isPlatform0Or1Or2() { return zuvPlatformCodeDetail::codeIsOneOf({0, 1, 2}); }
inline bool isPlatform0Or1Or2Or4() { return zuvPlatformCodeDetail::codeIsOneOf({0, 1, 2, 4}); }
