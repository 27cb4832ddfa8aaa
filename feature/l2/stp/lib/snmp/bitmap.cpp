#include "bitmap.h"

#include <bit>
#include <charconv>
#include <cstring>

namespace stpsnmp::bitmap {
namespace {

constexpr uint32_t kWordBits = 64;
constexpr uint64_t kAllBits = ~uint64_t{0};

static_assert(STP_VLAN_BITMAP_SIZE % sizeof(uint64_t) == 0, "a bitmap is made of whole words");

// A word of the bitmap with its first bit as the most significant one.
uint64_t load_word(const uint8_t *octets, uint32_t word) {
  uint64_t value;
  std::memcpy(&value, octets + word * sizeof value, sizeof value);
  return std::endian::native == std::endian::little ? __builtin_bswap64(value) : value;
}

// The first bit that is set once the bitmap's bits are flipped by `flip`.
uint32_t find(const uint8_t *octets, uint32_t bits, uint32_t from, uint64_t flip) {
  uint64_t wanted = kAllBits >> (from % kWordBits);
  for (uint32_t word = from / kWordBits; word < bits / kWordBits; ++word) {
    const uint64_t found = (load_word(octets, word) ^ flip) & wanted;
    if (found != 0) {
      return word * kWordBits + static_cast<uint32_t>(std::countl_zero(found));
    }
    wanted = kAllBits;
  }
  return bits;
}

}  // namespace

uint32_t find_set(const uint8_t *octets, uint32_t bits, uint32_t from) { return find(octets, bits, from, 0); }

uint32_t find_clear(const uint8_t *octets, uint32_t bits, uint32_t from) {
  return find(octets, bits, from, kAllBits);
}

const char *write_vlan_list(const stp_vlan_bmp &vlans, char (&text)[kVlanListSize]) {
  char *at = text;
  char *const end = text + sizeof text;
  for (uint32_t first = find_set(vlans.bits, kVlans, 0); first < kVlans;) {
    const uint32_t behind = find_clear(vlans.bits, kVlans, first);
    if (at != text) {
      *at++ = ',';
    }
    at = std::to_chars(at, end, first).ptr;
    if (behind - first > 1) {
      *at++ = '-';
      at = std::to_chars(at, end, behind - 1).ptr;
    }
    first = find_set(vlans.bits, kVlans, behind);
  }
  *at = '\0';
  return text;
}

}  // namespace stpsnmp::bitmap
