// The entry of a bridge port that is found in the VLANs' membership.
#include "bitmap.h"
#include "platform/im.h"
#include "platform/stp.h"
#include "search/base_port.h"
#include "stpsnmp/port_state.h"

namespace stpsnmp::search {
namespace {

using diagnostics::kRejection;
using diagnostics::kTrace;
using query::Reply;

constexpr char kFunction[] = "get_stp_entry_with_port_id_from_vlan_mgr";  // as which it logs

constexpr bool kUseCache = true;

// A port whose state cannot be told counts as up.
bool is_down(uint32_t if_index) {
  uint32_t state = 0;
  return stp_get_port_oper_state(if_index, &state) == 0 && state == IF_OPER_DOWN;
}

}  // namespace

bool find_base_port_entry(const EntryKind &kind, cmd_action action, uint8_t selector, DownPorts down,
                          uint16_t *port_id, Reply *reply) {
  uint32_t if_index = 0;
  if (!find_base_port(action, selector, &bitmap::kAllVlans, kUseCache, port_id, &if_index)) {
    STP_LOG(kRejection, "\n%s(%d): returning FAILURE\n", kFunction, __LINE__);
    return false;
  }
  if (down.are_spared && is_down(if_index)) {
    STP_LOG(kTrace, "%s(%d): Port 0x%x is oper down, dont send the cmd to backend\n", kFunction, __LINE__,
            if_index);
    if (down.is_down == nullptr) {
      STP_LOG(kRejection, "%s(%d): Null pointer use_default\n", kFunction, __LINE__);
      return false;
    }
    *down.is_down = true;
    return true;
  }
  if (!fetch_entry(kind, CMD_ACTION_GET, nullptr, &if_index, reply)) {
    STP_LOG(kRejection, "get_stp_entry_from_if_index failed\n");
    release(reply);
    return false;
  }
  if (stp_ifindex2dot1dportnum(if_index, port_id) != 0) {
    release(reply);
    STP_LOG(kTrace, "\n%s(%d): returning FAILURE\n", kFunction, __LINE__);
    return false;
  }
  if (reply == nullptr) {
    STP_LOG(kTrace, "\n%s(%d) resp_h is NULL\n", kFunction, __LINE__);
  }
  return true;
}

}  // namespace stpsnmp::search
