// Sets of small identifiers, and the lists such as "1,10-19" that people write for them: VLANs (vlan_set.h)
// and spanning trees (tree_set.h).
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/stp.h"

namespace stpswitch {

// Kept as platform/stp.h lays VLANs out, since that is how most of it leaves the switch.
class IdSet {
 public:
  void insert(uint32_t id) { octet_of(id) |= bit_of(id); }
  void erase(uint32_t id) { octet_of(id) &= static_cast<uint8_t>(~bit_of(id)); }
  void insert(const IdSet &ids);
  void erase(const IdSet &ids);

  // Leave what is in both sets, or in exactly one of them.
  void intersect(const IdSet &ids);
  void toggle(const IdSet &ids);

  // Any number may be asked for.
  bool contains(uint32_t id) const { return id < kEnd && (octets_[id / kBitsPerOctet] & bit_of(id)) != 0; }
  std::optional<uint32_t> first_from(uint32_t id) const;
  // Calls `take` with each, in ascending order.
  template <class Take>
  void for_each(Take take) const {
    for (uint32_t i = 0; i < octets_.size(); ++i) {
      for (uint8_t left = octets_[i]; left != 0;) {
        const auto bit = static_cast<uint32_t>(std::countl_zero(left));
        left &= static_cast<uint8_t>(~bit_of(bit));
        take(i * kBitsPerOctet + bit);
      }
    }
  }
  bool is_empty() const;
  bool overlaps(const IdSet &ids) const;

  const std::array<uint8_t, STP_VLAN_BITMAP_SIZE> &octets() const { return octets_; }

  bool operator==(const IdSet &) const = default;

 private:
  static constexpr uint32_t kBitsPerOctet = 8;
  static constexpr uint32_t kEnd = STP_VLAN_BITMAP_SIZE * kBitsPerOctet;

  static uint8_t bit_of(uint32_t id) { return static_cast<uint8_t>(0x80U >> (id % kBitsPerOctet)); }
  uint8_t &octet_of(uint32_t id) { return octets_[id / kBitsPerOctet]; }

  std::array<uint8_t, STP_VLAN_BITMAP_SIZE> octets_{};
};

// What a list is a list of.
struct IdKind {
  std::string_view name;  // of one; an s makes it several
  std::string_view example;
  uint32_t min;
  uint32_t max;
};

// Reads a list of identifiers and ranges of them; an empty one is the empty set. Throws Refusal.
IdSet parse_ids(std::string_view text, const IdKind &kind);

// The shortest list of ascending ranges.
std::string print_ids(const IdSet &ids);

}  // namespace stpswitch
