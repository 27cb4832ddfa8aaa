// Sets of VLAN identifiers, and the lists such as "1,10-19" that people write for them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/stp.h"

namespace stpswitch {

// VLAN identifiers (IEEE 802.1Q clause 9.6): 0 and 4095 are reserved, and never in a set.
inline constexpr uint32_t kMinVlan = 1;
inline constexpr uint32_t kMaxVlan = 4094;

// Kept as platform/stp.h lays it out, since that is how most of it leaves the switch.
class VlanSet {
 public:
  void insert(uint32_t vlan) { octet_of(vlan) |= bit_of(vlan); }
  void erase(uint32_t vlan) { octet_of(vlan) &= static_cast<uint8_t>(~bit_of(vlan)); }
  void insert(const VlanSet &vlans);
  void erase(const VlanSet &vlans);
  bool contains(uint32_t vlan) const { return (octets_[vlan / kBitsPerOctet] & bit_of(vlan)) != 0; }

  const std::array<uint8_t, STP_VLAN_BITMAP_SIZE> &octets() const { return octets_; }

 private:
  static constexpr uint32_t kBitsPerOctet = 8;

  static uint8_t bit_of(uint32_t vlan) { return static_cast<uint8_t>(0x80U >> (vlan % kBitsPerOctet)); }
  uint8_t &octet_of(uint32_t vlan) { return octets_[vlan / kBitsPerOctet]; }

  std::array<uint8_t, STP_VLAN_BITMAP_SIZE> octets_{};
};

// Reads a list of VLANs and ranges of VLANs; an empty one is the empty set. Throws Refusal.
VlanSet parse_vlans(std::string_view text);

// The shortest list of ascending ranges.
std::string print_vlans(const VlanSet &vlans);

}  // namespace stpswitch
