#pragma once
// Failures of the standard IPMI commands.

#include <cstdint>
#include <stdexcept>
#include <string>

namespace zuvIPMI {

class Exception : public std::runtime_error {
public:
    explicit Exception(const std::string& message) : std::runtime_error(message) {}
};

class InvalidResponseDataSizeException : public Exception {
public:
    explicit InvalidResponseDataSizeException(const std::string& commandName)
        : Exception("Incorrect response data size for " + commandName + "!") {}
};

class IPMICommandFailureException : public Exception {
public:
    explicit IPMICommandFailureException(uint8_t code)
        : Exception("IPMI command failed with: [" + std::to_string(code) + "]"), completionCode(code) {}
    uint8_t getCompletionCode() const { return completionCode; }

private:
    uint8_t completionCode;
};

// Completion code 0xC5: the reservation was cancelled or is invalid.
class SDRRepositoryReservationNotValidException : public IPMICommandFailureException {
public:
    SDRRepositoryReservationNotValidException() : IPMICommandFailureException(0xC5) {}
};

}  // namespace zuvIPMI
