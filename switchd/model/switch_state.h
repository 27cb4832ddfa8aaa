// The state of a switch, as its source (sources/source.h) states it: what is configured, what was observed,
// and the numbers of what there is. What follows from it is in derived.h and tree_values.h.
#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "model/configured.h"
#include "model/observed.h"

namespace stpswitch {

// How an interface is known, which its source sees to: the same over restarts as long as the interface is.
struct InterfaceNumbers {
  uint32_t if_index = 0;                 // the switch's own; its top octet tells the type (wire/if_index.h)
  uint32_t bridge_port = 0;              // 0: it has none
  std::optional<uint32_t> port_id;       // of 16 bits; none: follows from priority and bridge port number
  std::optional<uint32_t> if_mib_index;  // ifIndex, RFC 2863
  // By which a real bridge itself knows the port.
  std::optional<uint32_t> own_number = std::nullopt;

  bool operator==(const InterfaceNumbers &) const = default;
};

// As the bridge has it in its port identifiers; of a switch that is no real bridge, its bridge port number.
inline uint32_t own_number(const InterfaceNumbers &numbers) {
  return numbers.own_number.value_or(numbers.bridge_port);
}

struct Interface : ConfiguredInterface, ObservedInterface {
  InterfaceNumbers numbers;

  bool operator==(const Interface &) const = default;
};

struct Port : Interface {
  std::optional<bool> half_duplex;
  uint32_t channel = 0;    // the port-channel it is a member of, 0 for none
  bool switchport = true;  // takes part in bridging

  bool operator==(const Port &) const = default;
};

struct PortChannel : Interface {
  bool operator==(const PortChannel &) const = default;
};

// What holds in every tree that does not state otherwise: what is configured, and the root of those of which
// the switch is not the root itself, without the system identifier extension.
struct Bridge {
  std::optional<MacAddress> address;
  TreeSettings settings;
  RootInformation root;

  bool operator==(const Bridge &) const = default;
};

struct MstInstance {
  VlanSet vlans;
  std::optional<uint32_t> remaining_hops;

  bool operator==(const MstInstance &) const = default;
};

struct Tree {
  TreeSettings settings;
  ObservedTree observed;

  bool operator==(const Tree &) const = default;
};

struct SwitchState {
  Settings settings;
  Bridge bridge;
  MstRegion mst;
  MstCist mst_cist;
  RapidPvst rapid_pvst;
  Access access;
  // By number. Ports and port-channels are in the order of their interface indexes, too.
  std::map<uint32_t, MstInstance> mst_instances;  // without the CIST
  std::map<uint32_t, Tree> trees;                 // of which there is something to tell
  std::map<uint32_t, Port> ports;
  std::map<uint32_t, PortChannel> port_channels;

  bool operator==(const SwitchState &) const = default;
};

}  // namespace stpswitch
