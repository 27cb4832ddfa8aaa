// Takes the place of platform/answers/shared_memory.h: before each load, somebody else may write.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace fuzz {

void before_load();

}  // namespace fuzz

namespace stpplatform::answers {

template <typename T>
T load_shared(const T &field) {
  fuzz::before_load();
  return __atomic_load_n(&field, __ATOMIC_RELAXED);
}

inline void copy_octets(void *to, const uint8_t *from, size_t size) {
  auto *octets = static_cast<uint8_t *>(to);
  for (size_t i = 0; i < size; ++i) {
    octets[i] = load_shared(from[i]);
  }
}

inline void copy_words(void *to, const void *from, size_t size) {
  auto *octets = static_cast<uint8_t *>(to);
  const auto *words = static_cast<const uint32_t *>(from);
  for (size_t i = 0; i < size / sizeof(uint32_t); ++i) {
    const uint32_t word = load_shared(words[i]);
    std::memcpy(octets + i * sizeof word, &word, sizeof word);
  }
}

}  // namespace stpplatform::answers
