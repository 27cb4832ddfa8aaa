// The error that a failed system call becomes.
#pragma once

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>

namespace stpswitch {

// What went wrong, with errno's reason: "cannot listen: Permission denied".
inline std::runtime_error system_failure(const std::string &what) {
  const int reason = errno;
  return std::runtime_error(what + ": " + std::generic_category().message(reason));
}

}  // namespace stpswitch
