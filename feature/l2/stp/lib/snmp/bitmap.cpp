#include "bitmap.h"

#include <bit>
#include <charconv>
#include <cstring>

#include "platform/vlan_mgr.h"

namespace stpsnmp::bitmap {
namespace {

constexpr uint32_t kOctetBits = 8;
constexpr uint32_t kWordBits = 64;
constexpr uint64_t kAllBits = ~uint64_t{0};

static_assert(STP_VLAN_BITMAP_SIZE % sizeof(uint64_t) == 0 && BASEPORT_BITMAP_SIZE % sizeof(uint64_t) == 0,
              "a bitmap is made of whole words");

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

constexpr uint8_t bit_in_octet(uint32_t bit) { return static_cast<uint8_t>(0x80U >> bit % kOctetBits); }

constexpr stp_vlan_bmp make_all_vlans() {
  constexpr uint8_t kAllOfOctet = 0xFF;
  stp_vlan_bmp vlans{STP_VLAN_BITMAP_SIZE, {}};
  for (uint8_t &octet : vlans.bits) {
    octet = kAllOfOctet;
  }
  vlans.bits[0] ^= bit_in_octet(0);
  vlans.bits[STP_VLAN_BITMAP_SIZE - 1] ^= bit_in_octet(kVlans - 1);
  return vlans;
}

}  // namespace

constexpr stp_vlan_bmp kAllVlans = make_all_vlans();

uint32_t find_set(const uint8_t *octets, uint32_t bits, uint32_t from) { return find(octets, bits, from, 0); }

uint32_t find_clear(const uint8_t *octets, uint32_t bits, uint32_t from) {
  return find(octets, bits, from, kAllBits);
}

bool find_run(const uint8_t *octets, uint32_t bits, uint32_t from, Run *run) {
  const uint32_t first = find_set(octets, bits, from);
  if (first >= bits) {
    return false;
  }
  *run = {first, find_clear(octets, bits, first) - 1};
  return true;
}

char *write_run(char *at, const Run &run) {
  char *const end = at + kRunSize;
  at = std::to_chars(at, end, run.first).ptr;
  if (run.last != run.first) {
    *at++ = '-';
    at = std::to_chars(at, end, run.last).ptr;
  }
  return at;
}

const char *write_vlan_list(const stp_vlan_bmp &vlans, char (&text)[kVlanListSize]) {
  char *at = text;
  Run run;
  for (uint32_t from = 0; find_run(vlans.bits, kVlans, from, &run); from = run.last + 1) {
    if (at != text) {
      *at++ = ',';
    }
    at = write_run(at, run);
  }
  *at = '\0';
  return text;
}

void add_vlan(uint32_t vlan, stp_vlan_bmp *vlans) {
  if (vlan < kVlans) {
    vlans->bits[vlan / kOctetBits] |= bit_in_octet(vlan);
  }
}

void remove_all_vlans(stp_vlan_bmp *vlans) {
  for (size_t i = 0; i < STP_VLAN_BITMAP_SIZE; ++i) {
    vlans->bits[i] = static_cast<uint8_t>(vlans->bits[i] & ~kAllVlans.bits[i]);
  }
}

}  // namespace stpsnmp::bitmap
