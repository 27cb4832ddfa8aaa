// The image's tables of the ports of trees.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "model/switch.h"
#include "model/tree_values.h"
#include "publisher/image_interfaces.h"
#include "wire/image.h"

namespace stpswitch {

// What the ports of the trees tell besides.
struct ToldByPorts {
  // Positions among the ports of trees, in ascending order.
  std::vector<uint32_t> pvid_or_type;
  std::vector<uint32_t> loop_inconsistent;
  std::vector<uint32_t> root_inconsistent;

  std::vector<RootSearch> roots;  // by tree, as many as there can be
};

class ImageTreePorts {
 public:
  // Both must outlive it.
  ImageTreePorts(const Switch *the_switch, const ImageInterfaces *interfaces);

  size_t count() const { return first_of_trees_.back(); }

  // The position of each tree's first port, and behind them the count of all.
  using FirstOfTrees = std::array<uint32_t, stpplatform::wire::kTrees + 1>;
  const FirstOfTrees &first_of_trees() const { return first_of_trees_; }

  // Fills the table, of count() records.
  ToldByPorts fill(std::span<stpplatform::wire::ImageTreePort> records) const;

  // Fills the table of the same size that has each tree's ports by number.
  void fill_by_number(std::span<uint16_t> positions) const;

 private:
  const Switch &switch_;
  const ImageInterfaces &interfaces_;
  FirstOfTrees first_of_trees_{};
};

}  // namespace stpswitch
