// The image's tables of the ports of trees.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "model/switch.h"
#include "publisher/image_interfaces.h"
#include "wire/image.h"

namespace stpswitch {

class ImageTreePorts {
 public:
  ImageTreePorts(const Switch &the_switch, const ImageInterfaces &interfaces);

  const std::vector<stpplatform::wire::ImageTreePort> &records() const { return records_; }

  // The position of each tree's first port, and behind them the count of all.
  using FirstOfTrees = std::array<uint32_t, stpplatform::wire::kTrees + 1>;
  const FirstOfTrees &first_of_trees() const { return first_of_trees_; }

  // The positions of those that have any of these inconsistencies.
  std::vector<uint32_t> inconsistent(unsigned kinds) const;

 private:
  std::vector<stpplatform::wire::ImageTreePort> records_;
  FirstOfTrees first_of_trees_{};
  unsigned inconsistencies_ = 0;  // of any port
};

}  // namespace stpswitch
