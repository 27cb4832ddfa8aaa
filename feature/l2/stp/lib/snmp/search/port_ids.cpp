#include "search/port_ids.h"

#include "diagnostics.h"
#include "platform/im.h"
#include "platform/stp.h"

namespace stpsnmp::search {
namespace {

using diagnostics::kRejection;
using diagnostics::kTrace;
using diagnostics::shown;

// As which the steps log.
constexpr char kCounting[] = "validate_port_id_for_snmp_search";
constexpr char kInterfaceManager[] = "validate_port_id_for_snmp_search_from_im";
constexpr char kNextPort[] = "stp_get_next_dot1dportnum";

constexpr uint16_t kAbovePorts = 65535;

// Moves a port id to the next of its range. Returns the type of that range, or 0 behind its end; it never
// steps from the physical ports to the port-channels.
uint8_t step_port_id(uint16_t *port_id) {
  const uint16_t current = *port_id;
  if (current < kMinPhysicalPort) {
    *port_id = kMinPhysicalPort;
    STP_LOG(kTrace, "\n%s(%d): port_id(%d) < MIN_STP_PORT_ID(%d)\n", kCounting, __LINE__, int{*port_id},
            int{kMinPhysicalPort});
    return IF_TYPE_PHYSICAL;
  }
  if (current < kMaxPhysicalPort) {
    ++*port_id;
    STP_LOG(kTrace, "\n%s(%d): port_id(%d) < MAX_STP_PORT_ID(%d)\n", kCounting, __LINE__, int{*port_id},
            int{kMaxPhysicalPort});
    return IF_TYPE_PHYSICAL;
  }
  if (current == kMinChannelPort - 1) {
    *port_id = kMinChannelPort;
    STP_LOG(kTrace, "\n%s(%d): port_id(%d) < MIN_CHANNEL_PORT_ID(%d)\n", kCounting, __LINE__, int{*port_id},
            int{kMinChannelPort});
    return IF_TYPE_PORT_CHANNEL;
  }
  if (current >= kMinChannelPort && current < kMaxChannelPort) {
    ++*port_id;
    STP_LOG(kTrace, "\n%s(%d): port_id(%d) < MAX_CHANNEL_PORT_ID(%d)\n", kCounting, __LINE__, int{*port_id},
            int{kMaxChannelPort});
    return IF_TYPE_PORT_CHANNEL;
  }
  STP_LOG(kTrace, "\n%s(%d): port_id: %d > MAX_CHANNEL_PORT_ID: %d\n", kCounting, __LINE__, int{current},
          int{kMaxChannelPort});
  return 0;
}

// Counts upwards to the next port that is a usable bridge port.
bool find_next_port(uint32_t *if_index, uint16_t *port_id, uint8_t *if_type) {
  for (;;) {
    STP_LOG(kTrace, "\n%s(%d): Check if port_id(%d) < MIN_STP_PORT_ID(%d)\n", kCounting, __LINE__,
            int{*port_id}, int{kMinPhysicalPort});
    const uint8_t type = step_port_id(port_id);
    if (type == 0) {
      return false;
    }
    *if_type = type;
    const bool is_converted = stp_dot1dportnum2ifindex(*port_id, if_index) == 0;
    if (!is_converted) {
      STP_LOG(kTrace, "\n%s(%d):stp_dot1dportnum2ifindex FAIL\n", kCounting, __LINE__);
    }
    STP_LOG(kTrace, "\n%s(%d): Checking if if_index: %d is valid\n", kCounting, __LINE__, shown(*if_index));
    if (is_converted && check_if_valid_base_port_ifindex(*if_index, BASE_PORT_ALL) != 0) {
      return true;
    }
    STP_LOG(kTrace, "\n%s(%d): Bad if_index: %d. Bumping up port_id: %d\n", kCounting, __LINE__,
            shown(*if_index), int{*port_id});
  }
}

}  // namespace

uint8_t type_of(uint32_t if_index) {
  uint8_t type = 0;
  if_index_get_type(if_index, &type);
  return type;
}

bool find_interface(uint16_t port_id, uint32_t *if_index) {
  return port_id != kNoPort && stp_dot1dportnum2ifindex(port_id, if_index) == 0 &&
         stp_valid_if_index(*if_index) != 0;
}

bool validate_by_counting(cmd_action action, uint32_t *in_if_index, uint32_t *ret_if_index, uint16_t *port_id,
                          uint8_t *if_type) {
  if (action == CMD_ACTION_GET) {
    if (!find_interface(*port_id, in_if_index)) {
      STP_LOG(kTrace, "\n%s(%d): returning FAILURE.\n", kCounting, __LINE__);
      return false;
    }
    if (*in_if_index == 0) {
      STP_LOG(kTrace, "\n%s(%d): in_if_index == 0\n", kCounting, __LINE__);
      return false;
    }
    *if_type = type_of(*in_if_index);
  } else if (!find_next_port(in_if_index, port_id, if_type)) {
    return false;
  }
  *ret_if_index = *in_if_index;
  stp_dot1dportnum2ifindex(*port_id, ret_if_index);
  STP_LOG(kTrace, "\n%s(%d): returning port_id(%d), in_if_index(%d), ret_if_index(%d), ret_if_type(%d)\n",
          kCounting, __LINE__, int{*port_id}, shown(*in_if_index), shown(*ret_if_index), int{*if_type});
  return true;
}

bool validate_by_interface_manager(cmd_action action, uint8_t selector, uint16_t *port_id,
                                   uint32_t *if_index) {
  uint32_t found = 0;
  if (action == CMD_ACTION_GET) {
    if (!find_interface(*port_id, &found)) {
      STP_LOG(kRejection, "\n%s(%d): returning FAILURE.\n", kInterfaceManager, __LINE__);
      return false;
    }
    if (found == 0) {
      STP_LOG(kRejection, "\n%s(%d): ifindex == 0\n", kInterfaceManager, __LINE__);
      return false;
    }
    *if_index = found;
    return true;
  }
  const uint16_t next = next_port_id(*port_id, selector);
  STP_LOG(kRejection, "%s(%d) base_port:%d, stp_flag:%d, stp_get_next_dot1dportnum() next_port:%d\n",
          kInterfaceManager, __LINE__, int{*port_id}, int{selector}, int{next});
  if (stp_dot1dportnum2ifindex(next, &found) != 0 || next == kNoPort) {
    STP_LOG(kRejection, "%s(%d) Invalid stp port:%d ifindex: %d\n", kInterfaceManager, __LINE__, int{next},
            shown(found));
    return false;
  }
  STP_LOG(kRejection, "%s(%d) return SUCCESS\n", kInterfaceManager, __LINE__);
  *if_index = found;
  *port_id = next;
  STP_LOG(kTrace, "\n%s(%d): returning port_id(%d), in_if_index(%d), ret_if_index(%d)\n", kInterfaceManager,
          __LINE__, int{next}, shown(found), shown(found));
  return true;
}

uint16_t next_port_id(uint16_t port_id, uint8_t selector) {
  STP_LOG(kTrace, "%s[%d]received base_port=%d", kNextPort, __LINE__, int{port_id});
  uint16_t best = kAbovePorts;
  uint32_t current = 0;
  uint32_t next = 0;
  for (; im_get_next_ifindex(current, &next) == 0 && next != 0; current = next, next = 0) {
    if (check_if_valid_base_port_ifindex(next, selector) == 0) {
      continue;
    }
    uint16_t port = 0;
    if (stp_ifindex2dot1dportnum(next, &port) != 0) {
      STP_LOG(kTrace, "%s[%d]error converting next_if_index=0x%x to dot1dportnum", kNextPort, __LINE__, next);
      continue;
    }
    if (port_id < port && port < best) {
      STP_LOG(kTrace, "%s[%d](tmp_base_port=%d, if_index=0x%xnext_base_port=%d, next_if_index=0x%x",
              kNextPort, __LINE__, int{port}, current, int{best}, next);
      best = port;
    }
  }
  if (best == kAbovePorts) {
    STP_LOG(kTrace, "%s[%d]no more if_indices; returning EOT", kNextPort, __LINE__);
    return kNoPort;
  }
  STP_LOG(kTrace, "%s[%d](base_port=%d, if_index=0x%xnext_base_port=%d, next_if_index=0x%x", kNextPort,
          __LINE__, int{port_id}, current, int{best}, 0U);
  return best;
}

}  // namespace stpsnmp::search
