#include "support/any_slot.h"

#include <cstddef>
#include <iterator>

#include "publisher/image_slot.h"
#include "support/switches.h"
#include "wire/image.h"

namespace wire = stpplatform::wire;

namespace fuzz {

const std::vector<uint8_t> &any_slot(uint8_t choice) {
  static const std::vector<std::vector<uint8_t>> slots = [] {
    constexpr uint8_t kSlots = 2;
    std::vector<std::vector<uint8_t>> made(kSlots);
    for (uint8_t i = 0; i < kSlots; ++i) {
      stpswitch::lay_out_slot(any_switch(i), &made[i]);
    }
    return made;
  }();
  return slots[choice % slots.size()];
}

// An octet tells the part of the slot: most of it is lists of trees and ports, which are nearly empty.
Rewrite any_rewrite(Input *input, size_t slot_size) {
  struct Part {
    size_t begin;
    size_t end;
  };
  constexpr size_t kFirstPorts = 512;
  constexpr size_t kTables = wire::aligned_table(sizeof(wire::ImageSlot));
  const Part parts[] = {
      {0, offsetof(wire::ImageSlot, settings)},
      {offsetof(wire::ImageSlot, settings), offsetof(wire::ImageSlot, first_tree_port)},
      {offsetof(wire::ImageSlot, first_tree_port), offsetof(wire::ImageSlot, first_tree_port) + kFirstPorts},
      {offsetof(wire::ImageSlot, first_tree_port), kTables},
      {kTables, slot_size},
      {kTables, kTables + kFirstPorts}};
  const Part &part = parts[input->number<uint8_t>() % std::size(parts)];
  const uint32_t words = static_cast<uint32_t>((part.end - part.begin) / sizeof(uint32_t));
  const auto place = static_cast<uint32_t>(part.begin + input->number<uint16_t>() % words * sizeof(uint32_t));
  return {place, input->number<uint32_t>()};
}

}  // namespace fuzz
