// What a port does in every tree that there could be.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "model/switch.h"
#include "wire/image.h"

namespace stpswitch {

// Functions of the model would look through a port's exceptions for each of its trees.
class PortInTrees {
 public:
  // `if_index`: of a bridge port.
  PortInTrees(const Switch &the_switch, uint32_t if_index);

  std::optional<PortRole> role(uint32_t tree) const;

  // As the image has them.
  uint8_t role_octet(uint32_t tree) const { return roles_[tree]; }
  uint8_t state_octet(uint32_t tree) const;
  uint8_t inconsistencies(uint32_t tree) const { return inconsistencies_[tree]; }

 private:
  using Octets = std::array<uint8_t, stpplatform::wire::kTrees>;

  void add_inconsistencies(const TreePorts &ports, uint32_t if_index, uint8_t kind);

  Octets roles_;
  Octets stated_states_;
  Octets inconsistencies_{};  // as they are reported
  TreeSet blocked_;           // where there is any inconsistency
};

}  // namespace stpswitch
