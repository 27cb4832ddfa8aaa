// Rows of tables whose index is the bridge port alone.
#pragma once

#include <cstdint>

namespace stpsnmp::search {

// Finds the port that a request means, for GET_NEXT the one behind it among the members of all VLANs, and
// fetches its entry with exactly that port as the key. `port_attr` is the key's attribute token; `selector`
// says which ports a walk accepts (enum base_port_selector). With `check_oper` not 0, a port that is down is
// not asked for: `*use_default` becomes 1, and there is no reply. It stays as it was otherwise, and may be
// null where `check_oper` is 0. Returns 0 with `*port_id` the row's port and `*resp_h` the caller's to
// release, or -1, after which `*port_id` may have moved and `*resp_h` is not to be touched.
int get_stp_entry_with_port_id_from_vlan_mgr(uint32_t mode, uint32_t port_attr, uint16_t *port_id,
                                             void **resp_h, uint32_t cmd_id, uint8_t selector,
                                             uint32_t check_oper, uint32_t *use_default);

}  // namespace stpsnmp::search
