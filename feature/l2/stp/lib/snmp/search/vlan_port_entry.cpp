#include "search/vlan_port_entry.h"

#include "bitmap.h"
#include "diagnostics.h"
#include "index_search.h"
#include "platform/cmd.h"
#include "platform/im.h"
#include "platform/stp.h"
#include "port_state.h"
#include "result.h"
#include "search/base_port.h"
#include "search/held_reply.h"
#include "search/key_form.h"

namespace stpsnmp::search {
namespace {

using diagnostics::kRejection;
using diagnostics::kTrace;

constexpr uint32_t kUseCache = 1;

// A port whose state cannot be told counts as up.
bool is_down(uint32_t if_index) {
  uint32_t state = 0;
  return stp_get_port_oper_state(if_index, &state) == 0 && state == IF_OPER_DOWN;
}

}  // namespace

int get_stp_entry_with_port_id_from_vlan_mgr(uint32_t mode, uint32_t port_attr, uint16_t *port_id,
                                             void **resp_h, uint32_t cmd_id, uint8_t selector,
                                             uint32_t check_oper, uint32_t *use_default) {
  uint32_t spare_if_index = 0;
  uint32_t if_index = 0;
  if (validate_port_id_for_snmp_search_new(mode, &spare_if_index, &if_index, port_id, selector,
                                           &bitmap::kAllVlans, kUseCache) != 0) {
    STP_LOG(kRejection, "\n%s(%d): returning FAILURE\n", __func__, __LINE__);
    return kFailed;
  }
  if (check_oper != 0 && is_down(if_index)) {
    STP_LOG(kTrace, "%s(%d): Port 0x%x is oper down, dont send the cmd to backend\n", __func__, __LINE__,
            if_index);
    if (use_default == nullptr) {
      STP_LOG(kRejection, "%s(%d): Null pointer use_default\n", __func__, __LINE__);
      return kFailed;
    }
    *use_default = 1;
    return 0;
  }
  if (get_stp_entry_from_if_index(CMD_ACTION_GET, kSingle, port_attr, &if_index, 0, nullptr, resp_h,
                                  cmd_id) != 0) {
    STP_LOG(kRejection, "get_stp_entry_from_if_index failed\n");
    release_reply(held_reply(resp_h));
    return kFailed;
  }
  if (stp_ifindex2dot1dportnum(if_index, port_id) != 0) {
    release_reply(held_reply(resp_h));
    STP_LOG(kTrace, "\n%s(%d): returning FAILURE\n", __func__, __LINE__);
    return kFailed;
  }
  if (resp_h == nullptr) {
    STP_LOG(kTrace, "\n%s(%d) resp_h is NULL\n", __func__, __LINE__);
  }
  return 0;
}

}  // namespace stpsnmp::search
