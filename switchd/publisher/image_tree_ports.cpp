#include "publisher/image_tree_ports.h"

#include <numeric>

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
  // The first exception that has a tree counts: it is written last.
  for (auto exception = stated.exceptions.rbegin(); exception != stated.exceptions.rend(); ++exception) {
    exception->second.for_each(
        [&roles, value = shown(exception->first)](uint32_t tree) { roles[tree] = value; });
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

// The positions of records with any of these kinds. `all` has the kinds of all records.
std::vector<uint32_t> positions_with(unsigned kinds, unsigned all,
                                     std::span<const wire::ImageTreePort> records) {
  std::vector<uint32_t> positions;
  for (uint32_t i = 0; (all & kinds) != 0 && i < records.size(); ++i) {
    if ((records[i].inconsistencies & kinds) != 0) {
      positions.push_back(i);
    }
  }
  return positions;
}

}  // namespace

ImageTreePorts::ImageTreePorts(const Switch *the_switch, const ImageInterfaces *interfaces)
    : switch_(*the_switch), interfaces_(*interfaces) {
  for (const auto &[if_index, trees] : switch_.tree_ports().by_port()) {
    trees.for_each([this](uint32_t tree) { ++first_of_trees_[tree + 1]; });
  }
  std::partial_sum(first_of_trees_.begin(), first_of_trees_.end(), first_of_trees_.begin());
}

ListedPorts ImageTreePorts::fill(std::span<wire::ImageTreePort> records) const {
  FirstOfTrees next = first_of_trees_;
  unsigned all = 0;
  for (const auto &[if_index, trees] : switch_.tree_ports().by_port()) {
    const uint16_t position = interfaces_.position_of(if_index);
    const OctetOfTrees roles = roles_of(switch_.bridge_ports().at(if_index));
    const OctetOfTrees inconsistencies = inconsistencies_of(switch_.inconsistencies(), if_index);
    trees.for_each([&](uint32_t tree) {
      records[next[tree]++] = {static_cast<uint16_t>(tree), position, roles[tree], inconsistencies[tree], 0};
      all |= inconsistencies[tree];
    });
  }
  return {positions_with(wire::kPvidInconsistent | wire::kTypeInconsistent, all, records),
          positions_with(wire::kLoopInconsistent, all, records),
          positions_with(wire::kRootInconsistent, all, records)};
}

}  // namespace stpswitch
