// The bridge ports of a bitmap, listed in the log.
#pragma once

#include "platform/vlan_mgr.h"

namespace stpsnmp::search {

// Logs lines of runs such as "1-3,5", each of which fits into 80 octets with its terminator. While they are
// built, printf_curr_idx is the last port that was listed; afterwards it is 0.
void list_base_ports(const vlan_mgr_baseport_bmp &ports);

}  // namespace stpsnmp::search
