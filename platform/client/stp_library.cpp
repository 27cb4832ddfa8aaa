// stp.h: bridge port numbers and MST contexts from the switch's snapshot, MST VLAN maps from replies.
#include <cstring>

#include "ask_snapshot.h"
#include "export.h"
#include "platform/stp.h"
#include "platform/stp_protocol.h"
#include "replies.h"

namespace stpplatform {
namespace {

constexpr uint32_t kOctetBits = 8;

uint16_t instance_of(const stp_mst_vlans &map) {
  return static_cast<uint16_t>((map.instance[0] << kOctetBits) | map.instance[1]);
}

bool is_wanted(uint16_t instance, uint32_t action, uint16_t asked) {
  return action == CMD_ACTION_GET ? instance == asked : instance > asked;
}

}  // namespace
}  // namespace stpplatform

namespace wire = stpplatform::wire;

extern "C" {

STPPLATFORM_EXPORT int stp_ifindex2dot1dportnum(uint32_t if_index, uint16_t *port) {
  if (port == nullptr) {
    return CMD_INVALID_ARGUMENT;
  }
  uint16_t found = 0;
  const cmd_result result =
      stpplatform::ask_interface(if_index, [&](const wire::SnapshotInterface &interface) {
        found = stpplatform::load_shared(interface.base_port);
      });
  if (result != CMD_OK) {
    return result;
  }
  if (found == 0) {
    return CMD_NO_ENTRY;
  }
  *port = found;
  return CMD_OK;
}

STPPLATFORM_EXPORT int stp_dot1dportnum2ifindex(uint16_t port, uint32_t *if_index) {
  if (if_index == nullptr) {
    return CMD_INVALID_ARGUMENT;
  }
  uint32_t found = 0;
  const cmd_result result = stpplatform::ask_snapshot([&](const stpplatform::SlotView &slot) {
    const wire::SnapshotInterface *interface = slot.find_port(port);
    if (interface == nullptr) {
      return CMD_NO_ENTRY;
    }
    found = stpplatform::load_shared(interface->if_index);
    return CMD_OK;
  });
  if (result == CMD_OK) {
    *if_index = found;
  }
  return result;
}

STPPLATFORM_EXPORT int stp_valid_if_index(uint32_t if_index) {
  bool switched = false;
  const cmd_result result =
      stpplatform::ask_interface(if_index, [&](const wire::SnapshotInterface &interface) {
        switched = stpplatform::load_shared(interface.switched) != 0;
      });
  return result == CMD_OK && switched ? 1 : 0;
}

STPPLATFORM_EXPORT int stp_get_mst_vlan_bmp(void *reply, uint32_t action, uint16_t *instance,
                                            stp_vlan_bmp *vlans) {
  const stpplatform::Reply *found = stpplatform::reply_of(reply);
  if (found == nullptr || instance == nullptr || vlans == nullptr ||
      (action != CMD_ACTION_GET && action != CMD_ACTION_GET_NEXT)) {
    return CMD_INVALID_ARGUMENT;
  }
  wire::AttributeReader reader = found->attributes();
  wire::Attribute attribute;
  while (reader.next(&attribute)) {
    if (attribute.token != STP_ATTRIBUTE_MST_VLAN_MAP) {
      continue;
    }
    if (attribute.length != sizeof(stp_mst_vlans)) {
      return CMD_BAD_REPLY;
    }
    const auto &map = *static_cast<const stp_mst_vlans *>(attribute.value);  // octets alone: aligned anywhere
    const uint16_t candidate = stpplatform::instance_of(map);
    if (stpplatform::is_wanted(candidate, action, *instance)) {
      *instance = candidate;
      vlans->size = STP_VLAN_BITMAP_SIZE;
      std::memcpy(vlans->bits, map.vlans, sizeof map.vlans);
      return CMD_OK;
    }
  }
  return CMD_NO_ENTRY;
}

STPPLATFORM_EXPORT int stp_dot1d_bridgemib_get_mst_ctx(uint16_t instance, stp_vlan_bmp *vlans) {
  if (vlans == nullptr) {
    return CMD_INVALID_ARGUMENT;
  }
  stp_vlan_bmp found;
  const cmd_result result = stpplatform::ask_snapshot([&](const stpplatform::SlotView &slot) {
    for (uint32_t i = 0; i < slot.mst_instance_count(); ++i) {
      const wire::SnapshotMstInstance &candidate = slot.mst_instance(i);
      if (stpplatform::load_shared(candidate.id) == instance) {
        found.size = STP_VLAN_BITMAP_SIZE;
        stpplatform::copy_shared(found.bits, candidate.vlans, sizeof found.bits);
        return CMD_OK;
      }
    }
    return CMD_NO_ENTRY;
  });
  if (result == CMD_OK) {
    *vlans = found;
  }
  return result;
}

}  // extern "C"
