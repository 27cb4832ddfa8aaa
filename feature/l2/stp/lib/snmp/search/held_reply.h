// The reply that a search holds in its caller's variable; callers that want no reply give no variable.
#pragma once

#include "platform/cmd.h"

namespace stpsnmp::search {

inline void *held_reply(void *const *reply) { return reply != nullptr ? *reply : nullptr; }

inline void release_reply(void *reply) {
  if (reply != nullptr) {
    cmd_snmp_free_rx_hndl(reply);
  }
}

}  // namespace stpsnmp::search
