#pragma once
// Failures of the SMBIOS access layer. Neither carries data: what() is std::exception's.

#include <exception>

namespace smbios_exceptions {

// No type 1 (system information) record is held, so nothing can be answered.
class not_initialized : public std::exception {};

// A section of the SMBIOS table could not be used while starting up.
class invalid_section : public std::exception {};

}  // namespace smbios_exceptions
