// Reading memory that another process may be writing: by atomic loads of whole fields.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace stpplatform::answers {

template <typename T>
T load_shared(const T &field) {
  return __atomic_load_n(&field, __ATOMIC_RELAXED);
}

// Copies `size` octets one by one.
inline void copy_octets(void *to, const uint8_t *from, size_t size) {
  auto *octets = static_cast<uint8_t *>(to);
  for (size_t i = 0; i < size; ++i) {
    octets[i] = load_shared(from[i]);
  }
}

// Copies `size` octets, a multiple of four, from an address that is one.
inline void copy_words(void *to, const void *from, size_t size) {
  auto *octets = static_cast<uint8_t *>(to);
  const auto *words = static_cast<const uint32_t *>(from);
  for (size_t i = 0; i < size / sizeof(uint32_t); ++i) {
    const uint32_t word = load_shared(words[i]);
    std::memcpy(octets + i * sizeof word, &word, sizeof word);
  }
}

}  // namespace stpplatform::answers
