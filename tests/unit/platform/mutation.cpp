#include "mutation.h"

#include <algorithm>
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
      const std::vector<uint8_t> tail(packet->begin() + at, packet->end());
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
