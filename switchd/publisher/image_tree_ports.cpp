#include "publisher/image_tree_ports.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <utility>

#include "publisher/port_in_trees.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

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

ToldByPorts ImageTreePorts::fill(std::span<wire::ImageTreePort> records) const {
  ToldByPorts told;
  told.roots.resize(wire::kTrees);
  FirstOfTrees next = first_of_trees_;
  unsigned all = 0;
  for (const auto &[if_index, trees] : switch_.tree_ports().by_port()) {
    const uint16_t position = interfaces_.position_of(if_index);
    const BridgePort &port = switch_.bridge_ports().at(if_index);
    const PortInTrees in_trees(switch_, if_index);
    trees.for_each([&](uint32_t tree) {
      const uint8_t role = in_trees.role(tree);
      records[next[tree]++] = {.tree = static_cast<uint16_t>(tree),
                               .interface = position,
                               .role = role,
                               .inconsistencies = in_trees.inconsistencies(tree),
                               .state = in_trees.state(tree),
                               .reserved = 0,
                               .designated = 0};
      all |= in_trees.inconsistencies(tree);
      // Ports of other roles tell nothing of the root.
      if (role == wire::kUnknown) {
        told.roots[tree].add(std::nullopt, port);
      } else if (role == static_cast<uint8_t>(PortRole::kRoot)) {
        told.roots[tree].add(PortRole::kRoot, port);
      }
    });
  }
  told.pvid_or_type = positions_with(wire::kPvidInconsistent | wire::kTypeInconsistent, all, records);
  told.loop_inconsistent = positions_with(wire::kLoopInconsistent, all, records);
  told.root_inconsistent = positions_with(wire::kRootInconsistent, all, records);
  return told;
}

void ImageTreePorts::fill_by_number(std::span<uint16_t> positions) const {
  std::vector<std::pair<uint32_t, uint32_t>> ports;  // numbers and interface indexes
  for (const auto &[if_index, trees] : switch_.tree_ports().by_port()) {
    ports.emplace_back(own_number(switch_.bridge_ports().at(if_index).interface->numbers), if_index);
  }
  std::sort(ports.begin(), ports.end());
  FirstOfTrees next = first_of_trees_;
  for (const auto &[number, if_index] : ports) {
    switch_.tree_ports().by_port().at(if_index).for_each(
        [&, position = interfaces_.position_of(if_index)](uint32_t tree) {
          positions[next[tree]++] = position;
        });
  }
}

}  // namespace stpswitch
