#include "server/send_failure.h"

#include <cerrno>

#include "base/system_failure.h"

namespace stpswitch {

std::string describe_send_failure(std::string_view what) {
  if (errno == EPIPE || errno == ECONNRESET) {
    return {};
  }
  return system_failure(std::string(what) + ": disconnecting the client").what();
}

}  // namespace stpswitch
