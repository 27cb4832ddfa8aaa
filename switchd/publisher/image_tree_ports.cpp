#include "publisher/image_tree_ports.h"

#include <numeric>
#include <ranges>

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

using OctetOfTrees = std::array<uint8_t, wire::kTrees>;

// A port's role in every tree that there could be. role_in() would look through its exceptions for each.
OctetOfTrees roles_of(const BridgePort &port) {
  const PerTree<PortRole> &stated = port.interface->role;
  const bool is_down = port.link_up == false;
  const auto shown = [is_down](PortRole role) {
    return static_cast<uint8_t>(is_down ? PortRole::kDisabled : role);
  };
  OctetOfTrees roles;
  roles.fill(stated.elsewhere ? shown(*stated.elsewhere) : wire::kUnknown);
  for (const auto &[role, trees] : std::views::reverse(stated.exceptions)) {
    trees.for_each([&roles, value = shown(role)](uint32_t tree) { roles[tree] = value; });
  }
  return roles;
}

void add_kind(const TreePorts &ports, uint32_t if_index, uint8_t kind, OctetOfTrees *inconsistencies) {
  const auto found = ports.by_port().find(if_index);
  if (found != ports.by_port().end()) {
    found->second.for_each([&](uint32_t tree) { (*inconsistencies)[tree] |= kind; });
  }
}

OctetOfTrees inconsistencies_of(const Inconsistencies &reported, uint32_t if_index) {
  OctetOfTrees inconsistencies{};
  add_kind(reported.pvid_and_type.by_kind()[0], if_index, wire::kPvidInconsistent, &inconsistencies);
  add_kind(reported.pvid_and_type.by_kind()[1], if_index, wire::kTypeInconsistent, &inconsistencies);
  add_kind(reported.loop.tree_ports(), if_index, wire::kLoopInconsistent, &inconsistencies);
  add_kind(reported.root.tree_ports(), if_index, wire::kRootInconsistent, &inconsistencies);
  return inconsistencies;
}

}  // namespace

ImageTreePorts::ImageTreePorts(const Switch &the_switch, const ImageInterfaces &interfaces) {
  const auto &trees_of_ports = the_switch.tree_ports().by_port();
  for (const auto &[if_index, trees] : trees_of_ports) {
    trees.for_each([this](uint32_t tree) { ++first_of_trees_[tree + 1]; });
  }
  std::partial_sum(first_of_trees_.begin(), first_of_trees_.end(), first_of_trees_.begin());
  records_.resize(first_of_trees_.back());
  FirstOfTrees next = first_of_trees_;
  for (const auto &[if_index, trees] : trees_of_ports) {
    const uint16_t position = interfaces.position_of(if_index);
    const OctetOfTrees roles = roles_of(the_switch.bridge_ports().at(if_index));
    const OctetOfTrees inconsistencies = inconsistencies_of(the_switch.inconsistencies(), if_index);
    trees.for_each([&](uint32_t tree) {
      records_[next[tree]++] = {static_cast<uint16_t>(tree), position, roles[tree], inconsistencies[tree], 0};
      inconsistencies_ |= inconsistencies[tree];
    });
  }
}

std::vector<uint32_t> ImageTreePorts::inconsistent(unsigned kinds) const {
  std::vector<uint32_t> positions;
  if ((inconsistencies_ & kinds) == 0) {
    return positions;
  }
  for (uint32_t position = 0; position < records_.size(); ++position) {
    if ((records_[position].inconsistencies & kinds) != 0) {
      positions.push_back(position);
    }
  }
  return positions;
}

}  // namespace stpswitch
