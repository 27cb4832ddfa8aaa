// The image's tables of interfaces: what is known of each, and which are members of which VLANs.
#pragma once

#include <cstdint>
#include <vector>

#include "model/switch.h"
#include "wire/image.h"

namespace stpswitch {

class ImageInterfaces {
 public:
  explicit ImageInterfaces(const Switch &the_switch);

  const std::vector<stpplatform::wire::ImageInterface> &records() const { return records_; }
  const std::vector<stpplatform::wire::ImageBridgePort> &bridge_ports() const { return bridge_ports_; }

  // By VLAN: words with a bit for each interface.
  const std::vector<uint32_t> &members() const { return members_; }

  void copy_positions_of_ports(uint16_t (&positions)[stpplatform::wire::kPortNumbers]) const;

  // The position of an interface that is there.
  uint16_t position_of(uint32_t if_index) const;

 private:
  void add(const stpplatform::wire::ImageInterface &interface);
  void add_memberships(uint32_t position, const VlanSet &vlans);

  std::vector<stpplatform::wire::ImageInterface> records_;
  std::vector<stpplatform::wire::ImageBridgePort> bridge_ports_;
  std::vector<uint32_t> members_;
};

}  // namespace stpswitch
