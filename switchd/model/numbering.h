// How the interfaces of a real bridge are numbered. Everything follows from numbers that the bridge itself
// gives, so that it stays the same over restarts.
#pragma once

#include <cstdint>

#include "model/switch_state.h"
#include "wire/if_index.h"

namespace stpswitch {

// A bridge port that is a single interface: port `number` of the switch.
inline InterfaceNumbers port_numbers(uint32_t number) {
  namespace wire = stpplatform::wire;
  return {.if_index = wire::if_index_of(IF_TYPE_PHYSICAL, number),
          .bridge_port = wire::kPhysicalBasePortOffset + number,
          .port_id = {},
          .if_mib_index = {}};
}

// A bridge port of several interfaces: port-channel `number` of the switch.
inline InterfaceNumbers channel_numbers(uint32_t number) {
  namespace wire = stpplatform::wire;
  return {.if_index = wire::if_index_of(IF_TYPE_PORT_CHANNEL, number),
          .bridge_port = wire::kChannelBasePortOffset + number,
          .port_id = {},
          .if_mib_index = {}};
}

// Members of port-channels are no bridge ports: their numbers come after those of all that are.
inline constexpr uint32_t kFirstMember = stpplatform::wire::kMaxPhysicalPort + 1;
inline constexpr uint32_t kLastMember = stpplatform::wire::kIfNumberMask;

// Member `number` of the switch, from kFirstMember to kLastMember.
inline InterfaceNumbers member_numbers(uint32_t number) {
  namespace wire = stpplatform::wire;
  return {.if_index = wire::if_index_of(IF_TYPE_PHYSICAL, number),
          .bridge_port = 0,
          .port_id = {},
          .if_mib_index = {}};
}

}  // namespace stpswitch
