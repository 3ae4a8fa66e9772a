#pragma once
// Failures of the IPMI device channel: empty classes, the detail is in the log.

#include <exception>

namespace ipmi_exceptions {
class invalid_handle : public std::exception {};
class send_error : public std::exception {};
class wait_fd_free_failed : public std::exception {};
class wait_error : public std::exception {};
class no_ack : public std::exception {};
class memory_error : public std::exception {};
class invalid_arguments : public std::exception {};
}  // namespace ipmi_exceptions
