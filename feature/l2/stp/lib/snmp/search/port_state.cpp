// Ports as the interface manager and the port-channel manager know them.
#include "stpsnmp/port_state.h"

#include "diagnostics.h"
#include "platform/im.h"
#include "platform/pcm.h"

using stpsnmp::diagnostics::kRejection;

int stp_get_port_oper_state(uint32_t if_index, uint32_t *state) {
  im_oper_status_entry entry{};
  entry.if_index = if_index;
  if (im_get_ifindex_oper_status_list(&entry, 1) != 0) {
    STP_LOG(kRejection, "%s(%d) : Failed to read ifdb for %d\n", __func__, __LINE__,
            static_cast<int32_t>(if_index));
    return STP_PORT_STATE_UNKNOWN;
  }
  *state = entry.oper_status;
  return 0;
}

int stp_is_member_port_of_pc(uint32_t if_index, uint32_t *is_member) {
  if (is_member == nullptr) {
    STP_LOG(kRejection, "%s(%d): NULL Pointer\n", __func__, __LINE__);
    return STP_PORT_STATE_UNKNOWN;
  }
  *is_member = 0;
  pcm_port_channel record;
  if (const int result = pcm_get_pc_for_port(if_index, &record); result != 0) {
    STP_LOG(kRejection, "%s(%d): Failed to read pcm ifdb for %d Error: %d\n", __func__, __LINE__,
            static_cast<int32_t>(if_index), result);
    return STP_PORT_STATE_UNKNOWN;
  }
  const uint32_t channel = record.pc_if_index;
  if (channel != 0) {
    STP_LOG(kRejection, "%s(%d): 0x%x is part of port-channel 0x%x", __func__, __LINE__, if_index, channel);
    *is_member = 1;
  }
  return 0;
}
