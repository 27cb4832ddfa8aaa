#include "search/base_port.h"

#include <cstdlib>
#include <memory>

#include "bitmap.h"
#include "diagnostics.h"
#include "platform/cmd.h"
#include "platform/im.h"
#include "platform/stp.h"
#include "search/port_ids.h"
#include "stpsnmp/port_state.h"

namespace stpsnmp::search {
namespace {

using diagnostics::kRejection;
using diagnostics::kTrace;
using diagnostics::shown;

constexpr char kFunction[] = "validate_port_id_for_snmp_search_new";  // as which the steps log

struct Free {
  void operator()(vlan_mgr_baseport_bmp *record) const { std::free(record); }
};

using BasePorts = std::unique_ptr<vlan_mgr_baseport_bmp, Free>;

bool find_exact(uint16_t port_id, uint32_t *if_index) {
  if (!find_interface(port_id, if_index)) {
    STP_LOG(kRejection, "\n%s(%d): returning FAILURE.\n", kFunction, __LINE__);
    return false;
  }
  if (*if_index == 0) {
    STP_LOG(kRejection, "\n%s(%d): ifindex == 0\n", kFunction, __LINE__);
    return false;
  }
  uint32_t is_member = 0;
  if (stp_is_member_port_of_pc(*if_index, &is_member) != 0) {
    STP_LOG(kRejection, "%s(%d): Failed to check member port in PC. ifindex 0x%x\n", kFunction, __LINE__,
            *if_index);
    return false;
  }
  if (is_member != 0) {
    STP_LOG(kTrace, "%s(%d): Port 0x%x is a member of PC, return no such inst\n", kFunction, __LINE__,
            *if_index);
    return false;
  }
  return true;
}

BasePorts fetch_members(const stp_vlan_bmp *vlans, bool use_cache) {
  if (use_cache) {
    BasePorts members(cached_members(vlans));
    if (members == nullptr) {
      STP_LOG(kRejection, "%s:%d  Failed to get stp_get_cached_baseport_bitmap_all_vlans, baseport 0x%x\n",
              kFunction, __LINE__, 0U);
    }
    return members;
  }
  BasePorts members(vlan_mgr_get_baseport_membership_range(vlans));
  if (members == nullptr) {
    STP_LOG(kRejection, "%s:%d vlan_mgr_get_baseport_membership_range returns NULL \n", kFunction, __LINE__);
  }
  return members;
}

constexpr int32_t kNoneBehind = -1;

// The first member behind a port.
int32_t find_behind(const vlan_mgr_baseport_bmp &members, int32_t port, diagnostics::Level level) {
  const uint32_t found = bitmap::find_set(members.bits, kBasePorts, static_cast<uint32_t>(port) + 1);
  const int32_t next = found < kBasePorts ? static_cast<int32_t>(found) : kNoneBehind;
  STP_LOG(level, "%s(%d) found next port : %d\n", kFunction, __LINE__, next);
  return next;
}

bool find_next(const stp_vlan_bmp *vlans, bool use_cache, uint8_t selector, uint16_t *port_id,
               uint32_t *if_index) {
  const BasePorts members = fetch_members(vlans, use_cache);
  if (members == nullptr) {
    return false;
  }
  if (members->size == 0) {
    STP_LOG(kRejection, "%s(%d): baseport_bmp size is 0, no next port\n", kFunction, __LINE__);
    return false;
  }
  STP_LOG(kRejection, "%s:%d Printing baseport bitset\n", kFunction, __LINE__);
  list_members(*members);
  for (int32_t port = find_behind(*members, *port_id, kRejection); port != kNoneBehind;
       port = find_behind(*members, port, kTrace)) {
    if (stp_dot1dportnum2ifindex(static_cast<uint16_t>(port), if_index) != 0) {
      STP_LOG(kTrace, "%s(%d) Invalid stp port ifindex: %d\n", kFunction, __LINE__, shown(*if_index));
      continue;
    }
    STP_LOG(kTrace, "%s(%d) found next port ifindex: %d\n", kFunction, __LINE__, shown(*if_index));
    if (check_if_valid_base_port_ifindex(*if_index, selector) != 0) {
      STP_LOG(kRejection, "%s(%d) found what we wanted ifindex: %d\n", kFunction, __LINE__, shown(*if_index));
      *port_id = static_cast<uint16_t>(port);
      return true;
    }
  }
  STP_LOG(kRejection, "%s(%d) No next port available in bitmap, return FAILURE\n", kFunction, __LINE__);
  return false;
}

}  // namespace

bool find_base_port(cmd_action action, uint8_t selector, const stp_vlan_bmp *vlans, bool use_cache,
                    uint16_t *port_id, uint32_t *if_index) {
  uint32_t found = 0;
  if (action == CMD_ACTION_GET) {
    if (!find_exact(*port_id, &found)) {
      return false;
    }
    *if_index = found;
    return true;
  }
  if (!find_next(vlans, use_cache, selector, port_id, &found)) {
    return false;
  }
  *if_index = found;
  STP_LOG(kTrace, "\n%s(%d): return SUCCESS with  port_id(%d), in_if_index(%d), ret_if_index(%d)\n",
          kFunction, __LINE__, int{*port_id}, shown(found), shown(found));
  return true;
}

}  // namespace stpsnmp::search
