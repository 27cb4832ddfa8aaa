#include "mutation.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

uint32_t below(Random *random, size_t limit) { return static_cast<uint32_t>((*random)() % limit); }

// Numbers that are wrong in interesting ways where a length, a count or a type is expected.
uint32_t odd_number(Random *random) {
  constexpr uint32_t kOdd[] = {0,       1,          2,          3,          4,      5,
                               7,       8,          1024,       1025,       0x7FFF, 0xFFFF,
                               0x10000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFF8, 511,    131072,
                               131073,  0xFFFFFFFC, 0xFFFFFFFD, 0xFFFFFFFF};
  return kOdd[below(random, std::size(kOdd))];
}

void mutate_once(std::vector<uint8_t> *packet, Random *random) {
  if (packet->empty()) {
    packet->push_back(static_cast<uint8_t>((*random)()));
    return;
  }
  const uint32_t at = below(random, packet->size());
  switch (below(random, 6)) {
    case 0:
      (*packet)[at] = static_cast<uint8_t>((*packet)[at] ^ (1U << below(random, 8)));
      break;
    case 1:
      (*packet)[at] = static_cast<uint8_t>((*random)());
      break;
    case 2: {
      const uint32_t number = odd_number(random);
      const size_t word = at & ~3U;
      std::memcpy(packet->data() + word, &number, std::min(sizeof number, packet->size() - word));
      break;
    }
    case 3:
      packet->resize(at);
      break;
    case 4:
      packet->insert(packet->end(), 1 + below(random, 16), static_cast<uint8_t>((*random)()));
      break;
    default: {
      const std::vector<uint8_t> tail(packet->data() + at, packet->data() + packet->size());
      packet->insert(packet->end(), tail.begin(), tail.end());
      break;
    }
  }
}

}  // namespace

void mutate(std::vector<uint8_t> *packet, Random *random) {
  const uint32_t times = 1 + below(random, 4);
  for (uint32_t i = 0; i < times; ++i) {
    mutate_once(packet, random);
  }
}

std::vector<std::vector<uint8_t>> damaged_everywhere(const std::vector<uint8_t> &good) {
  using Packet = std::vector<uint8_t>;
  std::vector<Packet> copies;
  for (size_t at = 0; at + sizeof(uint32_t) <= good.size(); at += sizeof(uint32_t)) {
    uint32_t word = 0;
    std::memcpy(&word, good.data() + at, sizeof word);
    for (const uint32_t other : {word ^ 1U, word ^ 0x80000000U, ~word, 0U, UINT32_MAX}) {
      Packet copy = good;
      std::memcpy(copy.data() + at, &other, sizeof other);
      copies.push_back(copy);
    }
  }
  for (size_t size = 1; size < good.size(); ++size) {
    copies.emplace_back(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size));
  }
  for (const size_t more : {1U, 4U, 16U, 4096U}) {
    copies.push_back(good);
    copies.back().resize(good.size() + more);
  }
  for (size_t from = 0; from < good.size(); from += sizeof(uint32_t)) {
    copies.push_back(good);
    copies.back().insert(copies.back().end(), good.begin() + static_cast<std::ptrdiff_t>(from), good.end());
  }
  copies.erase(std::remove(copies.begin(), copies.end(), good), copies.end());
  return copies;
}
