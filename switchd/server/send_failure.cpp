#include "server/send_failure.h"

#include <cerrno>
#include <string>

#include "base/log.h"
#include "base/system_failure.h"

namespace stpswitch {

void log_send_failure(std::string_view what) {
  if (errno != EPIPE && errno != ECONNRESET) {
    log_line(system_failure(std::string(what) + ": disconnecting the client").what());
  }
}

}  // namespace stpswitch
