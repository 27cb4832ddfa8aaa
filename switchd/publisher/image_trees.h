// The image's tables of trees, and of what ports know of their segments.
#pragma once

#include <span>
#include <vector>

#include "model/switch.h"
#include "publisher/image_interfaces.h"
#include "publisher/image_tree_ports.h"
#include "wire/image.h"

namespace stpswitch {

class ImageTrees {
 public:
  // `roots`: what the ports of each tree have told. The switch must outlive it.
  ImageTrees(const Switch &the_switch, const std::vector<RootSearch> &roots);

  const std::vector<stpplatform::wire::ImageTree> &records() const { return records_; }

  // What those ports know that do not merely know what the bridge sends. Their records learn where it stands.
  std::vector<stpplatform::wire::ImageDesignated> designated(
      const ImageInterfaces &interfaces, std::span<stpplatform::wire::ImageTreePort> ports) const;

 private:
  const Switch &switch_;
  std::vector<stpplatform::wire::ImageTree> records_;
  std::vector<ObservedTree> observed_;  // by tree, as many as there can be
};

}  // namespace stpswitch
