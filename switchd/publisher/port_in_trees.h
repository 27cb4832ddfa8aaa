// What a port does in every tree that there could be.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "model/switch.h"
#include "wire/image.h"

namespace stpswitch {

// Functions of the model would look through a port's exceptions for each of its trees.
class PortInTrees {
 public:
  // `if_index`: of a bridge port.
  PortInTrees(const Switch &the_switch, uint32_t if_index);

  // As the image has them.
  uint8_t role(uint32_t tree) const { return roles_[tree]; }
  uint8_t state(uint32_t tree) const {
    return states_.of(roles_[tree], stated_states_[tree], blocked_.contains(tree));
  }
  uint8_t inconsistencies(uint32_t tree) const { return inconsistencies_[tree]; }

 private:
  using Octets = std::array<uint8_t, stpplatform::wire::kTrees>;

  // What port_state() says of each combination: there are few of them, and millions of ports in trees.
  class States {
   public:
    States();
    uint8_t of(uint8_t role, uint8_t stated, bool is_blocked) const {
      return states_[place_of(role, stated, is_blocked)];
    }

   private:
    // What is unknown has the largest number.
    static constexpr size_t kValues = 8;
    static size_t place_of(uint8_t role, uint8_t stated, bool is_blocked) {
      return (is_blocked ? kValues * kValues : 0) + role % kValues * kValues + stated % kValues;
    }

    std::array<uint8_t, 2 * kValues * kValues> states_;
  };
  static const States states_;

  void add_inconsistencies(const TreePorts &ports, uint32_t if_index, uint8_t kind);

  Octets roles_;
  Octets stated_states_;
  Octets inconsistencies_{};  // as they are reported
  TreeSet blocked_;           // where there is any inconsistency
};

}  // namespace stpswitch
