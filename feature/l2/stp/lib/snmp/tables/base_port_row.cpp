#include "tables/base_port_row.h"

#include "platform/im.h"
#include "search/vlan_port_entry.h"

namespace stpsnmp::tables {

int find_base_port(const RowRequest &request, stp_command command, stp_key key, query::Reply *reply,
                   uint16_t *port_id, bool *is_down) {
  *port_id = static_cast<uint16_t>(request.index_arc(0));
  const bool spares_down_ports = is_down != nullptr;
  uint32_t use_default = 0;
  const int result = search::get_stp_entry_with_port_id_from_vlan_mgr(
      request.action(), key, port_id, reply->out(), command, BASE_PORT_ALL, spares_down_ports ? 1 : 0,
      spares_down_ports ? &use_default : nullptr);
  if (result != 0) {
    reply->detach();  // not the caller's after a failure
  }
  if (spares_down_ports) {
    *is_down = use_default != 0;
  }
  return result;
}

}  // namespace stpsnmp::tables
