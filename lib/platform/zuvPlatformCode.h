#pragma once
// The platform code of the running host, kept once per process, and the predicates on it
// that the device location rules and the GeoID decoder consult. Codes come from the SMBIOS
// family string: 0, 1, 2, 4, or -1 (zuvPlatformCodeUnknown) while unknown.

#include <cstdint>

// The cached code. While it is unknown, each call builds the platform services, asks them
// for the platform and caches the answer; a platform that stays unknown is asked again at
// the next call. Throws std::runtime_error "Couldnot Fetch the Platform details" when the
// SMBIOS data can't be read.
int32_t getCachedPlatformCode();

// Sets the cached code, e.g. for a process that knows its platform without SMBIOS;
// -1 makes the next getCachedPlatformCode() ask the platform again.
void storeCachedPlatformCode(int32_t code);

bool isPlatform2();
bool isPlatform4();
bool isPlatform0Or1();
bool isPlatform2Or4();
bool isPlatform0Or1Or2();
bool isPlatform0Or1Or2Or4();
