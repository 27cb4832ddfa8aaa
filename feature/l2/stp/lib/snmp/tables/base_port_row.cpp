#include "tables/base_port_row.h"

#include <optional>

#include "platform/im.h"
#include "search/base_port.h"

namespace stpsnmp::tables {

bool find_base_port_row(const RowRequest &request, stp_command command, stp_key key, Reply *reply,
                        uint16_t *port_id, bool *is_down) {
  *port_id = static_cast<uint16_t>(request.index_arc(0));
  if (is_down != nullptr) {
    *is_down = false;
  }
  return search::find_base_port_entry({command, key, std::nullopt}, request.action(), BASE_PORT_ALL,
                                      {is_down != nullptr, is_down}, port_id, reply);
}

}  // namespace stpsnmp::tables
