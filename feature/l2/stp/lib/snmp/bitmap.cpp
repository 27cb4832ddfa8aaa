#include "bitmap.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstring>
#include <limits>

#include "platform/vlan_mgr.h"

namespace stpsnmp::bitmap {
namespace {

constexpr uint32_t kOctetBits = 8;
constexpr uint32_t kWordBits = 64;
constexpr size_t kWordSize = sizeof(uint64_t);
constexpr uint64_t kAllBits = ~uint64_t{0};

static_assert(STP_VLAN_BITMAP_SIZE % sizeof(uint64_t) == 0 && BASEPORT_BITMAP_SIZE % sizeof(uint64_t) == 0,
              "a bitmap is made of whole words");

// A word of the bitmap with its first bit as the most significant one.
uint64_t load_word(const uint8_t *octets, uint32_t word) {
  uint64_t value;
  std::memcpy(&value, octets + word * sizeof value, sizeof value);
  return std::endian::native == std::endian::little ? __builtin_bswap64(value) : value;
}

// A bitmap has few runs, and between them words that are all alike: these are passed over by the block, of
// which the compiler makes as few instructions as the machine has wide registers.
using Lanes = uint64_t __attribute__((vector_size(16)));
constexpr uint32_t kBlockLanes = 16;
constexpr uint32_t kBlockWords = kBlockLanes * sizeof(Lanes) / sizeof(uint64_t);

// Whether no word of a block has a bit that differs from those of `alike`.
template <uint64_t alike>
bool is_block_of(const uint8_t *octets) {
  Lanes differences{};
  for (uint32_t i = 0; i < kBlockLanes; ++i) {
    Lanes lanes;
    std::memcpy(&lanes, octets + i * sizeof lanes, sizeof lanes);
    differences |= lanes ^ alike;
  }
  return (differences[0] | differences[1]) == 0;
}

// Whether all words from one on are like `alike`. The C library compares them faster than anybody else.
template <uint64_t alike>
bool is_rest_of(const uint8_t *octets, uint32_t word, uint32_t words) {
  const uint8_t *const first = octets + word * kWordSize;
  return *first == static_cast<uint8_t>(alike) &&
         std::memcmp(first, first + 1, (words - word) * kWordSize - 1) == 0;
}

// The first bit at or after `from` that differs from those of `alike`, which are all the same.
template <uint64_t alike>
uint32_t find_other(const uint8_t *octets, uint32_t bits, uint32_t from) {
  const uint32_t words = bits / kWordBits;
  uint64_t wanted = kAllBits >> (from % kWordBits);
  uint32_t word = from / kWordBits;
  while (word < words) {
    const uint32_t end_of_block = std::min(words, (word / kBlockWords + 1) * kBlockWords);
    for (; word < end_of_block; ++word) {
      const uint64_t found = (load_word(octets, word) ^ alike) & wanted;
      if (found != 0) {
        return word * kWordBits + static_cast<uint32_t>(std::countl_zero(found));
      }
      wanted = kAllBits;
    }
    if (word < words && is_rest_of<alike>(octets, word, words)) {
      return bits;
    }
    while (words - word >= kBlockWords && is_block_of<alike>(octets + word * sizeof wanted)) {
      word += kBlockWords;
    }
  }
  return bits;
}

constexpr uint8_t bit_in_octet(uint32_t bit) { return static_cast<uint8_t>(0x80U >> bit % kOctetBits); }

char *write_number(char *at, uint32_t number) {
  constexpr int kMostDigits = std::numeric_limits<uint32_t>::digits10 + 1;
  return std::to_chars(at, at + kMostDigits, number).ptr;
}

size_t digits_of(uint32_t number) {
  constexpr uint32_t kBase = 10;
  size_t digits = 1;
  for (; number >= kBase; number /= kBase) {
    ++digits;
  }
  return digits;
}

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

uint32_t find_set(const uint8_t *octets, uint32_t bits, uint32_t from) {
  return find_other<0>(octets, bits, from);
}

uint32_t find_clear(const uint8_t *octets, uint32_t bits, uint32_t from) {
  return find_other<kAllBits>(octets, bits, from);
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
  at = write_number(at, run.first);
  if (run.last != run.first) {
    *at++ = '-';
    at = write_number(at, run.last);
  }
  return at;
}

size_t run_size(const Run &run) {
  return run.last == run.first ? digits_of(run.first) : digits_of(run.first) + 1 + digits_of(run.last);
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
