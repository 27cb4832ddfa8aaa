// Port ids of requests: is this one usable, and which one is next.
#include "diagnostics.h"
#include "index_search.h"
#include "platform/cmd.h"
#include "platform/im.h"
#include "platform/stp.h"
#include "result.h"
#include "search/port_ids.h"

using namespace stpsnmp::search;
using stpsnmp::kFailed;
using stpsnmp::diagnostics::kRejection;
using stpsnmp::diagnostics::kTrace;

namespace {

constexpr uint16_t kAbovePorts = 65535;

// Moves a port id to the next of its range. Returns the type of that range, or 0 behind its end; it never
// steps from the physical ports to the port-channels.
uint8_t step_port_id(uint16_t *port_id, const char *function) {
  const uint16_t current = *port_id;
  if (current < kMinPhysicalPort) {
    *port_id = kMinPhysicalPort;
    STP_LOG(kTrace, "\n%s(%d): port_id(%d) < MIN_STP_PORT_ID(%d)\n", function, __LINE__, int{*port_id},
            int{kMinPhysicalPort});
    return IF_TYPE_PHYSICAL;
  }
  if (current < kMaxPhysicalPort) {
    ++*port_id;
    STP_LOG(kTrace, "\n%s(%d): port_id(%d) < MAX_STP_PORT_ID(%d)\n", function, __LINE__, int{*port_id},
            int{kMaxPhysicalPort});
    return IF_TYPE_PHYSICAL;
  }
  if (current == kMinChannelPort - 1) {
    *port_id = kMinChannelPort;
    STP_LOG(kTrace, "\n%s(%d): port_id(%d) < MIN_CHANNEL_PORT_ID(%d)\n", function, __LINE__, int{*port_id},
            int{kMinChannelPort});
    return IF_TYPE_PORT_CHANNEL;
  }
  if (current >= kMinChannelPort && current < kMaxChannelPort) {
    ++*port_id;
    STP_LOG(kTrace, "\n%s(%d): port_id(%d) < MAX_CHANNEL_PORT_ID(%d)\n", function, __LINE__, int{*port_id},
            int{kMaxChannelPort});
    return IF_TYPE_PORT_CHANNEL;
  }
  STP_LOG(kTrace, "\n%s(%d): port_id: %d > MAX_CHANNEL_PORT_ID: %d\n", function, __LINE__, int{current},
          int{kMaxChannelPort});
  return 0;
}

// Counts upwards to the next port that is a usable bridge port.
bool find_next_port(uint32_t *if_index, uint16_t *port_id, uint8_t *if_type, const char *function) {
  for (;;) {
    STP_LOG(kTrace, "\n%s(%d): Check if port_id(%d) < MIN_STP_PORT_ID(%d)\n", function, __LINE__,
            int{*port_id}, int{kMinPhysicalPort});
    const uint8_t type = step_port_id(port_id, function);
    if (type == 0) {
      return false;
    }
    *if_type = type;
    const bool is_converted = stp_dot1dportnum2ifindex(*port_id, if_index) == 0;
    if (!is_converted) {
      STP_LOG(kTrace, "\n%s(%d):stp_dot1dportnum2ifindex FAIL\n", function, __LINE__);
    }
    const auto shown = static_cast<int32_t>(*if_index);
    STP_LOG(kTrace, "\n%s(%d): Checking if if_index: %d is valid\n", function, __LINE__, shown);
    if (is_converted && check_if_valid_base_port_ifindex(*if_index, BASE_PORT_ALL) != 0) {
      return true;
    }
    STP_LOG(kTrace, "\n%s(%d): Bad if_index: %d. Bumping up port_id: %d\n", function, __LINE__, shown,
            int{*port_id});
  }
}

}  // namespace

int validate_port_id_for_snmp_search(uint32_t action, uint32_t *in_if_index, uint32_t *ret_if_index,
                                     uint16_t *port_id, uint8_t *if_type) {
  if (action == CMD_ACTION_GET) {
    if (!find_interface(*port_id, in_if_index)) {
      STP_LOG(kTrace, "\n%s(%d): returning FAILURE.\n", __func__, __LINE__);
      return kFailed;
    }
    if (*in_if_index == 0) {
      STP_LOG(kTrace, "\n%s(%d): in_if_index == 0\n", __func__, __LINE__);
      return kFailed;
    }
    *if_type = type_of(*in_if_index);
  } else if (!find_next_port(in_if_index, port_id, if_type, __func__)) {
    return kFailed;
  }
  *ret_if_index = *in_if_index;
  stp_dot1dportnum2ifindex(*port_id, ret_if_index);
  STP_LOG(kTrace, "\n%s(%d): returning port_id(%d), in_if_index(%d), ret_if_index(%d), ret_if_type(%d)\n",
          __func__, __LINE__, int{*port_id}, static_cast<int32_t>(*in_if_index),
          static_cast<int32_t>(*ret_if_index), int{*if_type});
  return 0;
}

uint16_t stp_get_next_dot1dportnum(uint16_t base_port, uint8_t stp_flag) {
  STP_LOG(kTrace, "%s[%d]received base_port=%d", __func__, __LINE__, int{base_port});
  uint16_t best = kAbovePorts;
  uint32_t current = 0;
  uint32_t next = 0;
  for (; im_get_next_ifindex(current, &next) == 0 && next != 0; current = next, next = 0) {
    if (check_if_valid_base_port_ifindex(next, stp_flag) == 0) {
      continue;
    }
    uint16_t port = 0;
    if (stp_ifindex2dot1dportnum(next, &port) != 0) {
      STP_LOG(kTrace, "%s[%d]error converting next_if_index=0x%x to dot1dportnum", __func__, __LINE__, next);
      continue;
    }
    if (base_port < port && port < best) {
      STP_LOG(kTrace, "%s[%d](tmp_base_port=%d, if_index=0x%xnext_base_port=%d, next_if_index=0x%x", __func__,
              __LINE__, int{port}, current, int{best}, next);
      best = port;
    }
  }
  if (best == kAbovePorts) {
    STP_LOG(kTrace, "%s[%d]no more if_indices; returning EOT", __func__, __LINE__);
    return kNoPort;
  }
  STP_LOG(kTrace, "%s[%d](base_port=%d, if_index=0x%xnext_base_port=%d, next_if_index=0x%x", __func__,
          __LINE__, int{base_port}, current, int{best}, 0U);
  return best;
}

int validate_port_id_for_snmp_search_from_im(uint32_t action, uint32_t *in_if_index, uint32_t *ret_if_index,
                                             uint16_t *port_id, uint8_t stp_flag) {
  uint32_t if_index = 0;
  if (action == CMD_ACTION_GET) {
    if (!find_interface(*port_id, &if_index)) {
      STP_LOG(kRejection, "\n%s(%d): returning FAILURE.\n", __func__, __LINE__);
      return kFailed;
    }
    if (if_index == 0) {
      STP_LOG(kRejection, "\n%s(%d): ifindex == 0\n", __func__, __LINE__);
      return kFailed;
    }
    *in_if_index = if_index;
    *ret_if_index = if_index;
    return 0;
  }
  const uint16_t next = stp_get_next_dot1dportnum(*port_id, stp_flag);
  STP_LOG(kRejection, "%s(%d) base_port:%d, stp_flag:%d, stp_get_next_dot1dportnum() next_port:%d\n",
          __func__, __LINE__, int{*port_id}, int{stp_flag}, int{next});
  if (stp_dot1dportnum2ifindex(next, &if_index) != 0 || next == kNoPort) {
    STP_LOG(kRejection, "%s(%d) Invalid stp port:%d ifindex: %d\n", __func__, __LINE__, int{next},
            static_cast<int32_t>(if_index));
    return kFailed;
  }
  STP_LOG(kRejection, "%s(%d) return SUCCESS\n", __func__, __LINE__);
  *in_if_index = if_index;
  *ret_if_index = if_index;
  *port_id = next;
  STP_LOG(kTrace, "\n%s(%d): returning port_id(%d), in_if_index(%d), ret_if_index(%d)\n", __func__, __LINE__,
          int{next}, static_cast<int32_t>(if_index), static_cast<int32_t>(if_index));
  return 0;
}
