#include "platform/bridge_mib.h"

#include <cstring>

#include "export.h"

namespace {

bool is_word_of_zeros(const uint8_t *octets) {
  uint64_t word;
  std::memcpy(&word, octets, sizeof word);
  return word == 0;
}

}  // namespace

extern "C" STPPLATFORM_EXPORT int dot1d_stringNonZeroLength(const uint8_t *octets, int length) {
  constexpr int kWordSize = sizeof(uint64_t);
  if (octets == nullptr) {
    return 0;
  }
  int used = length;
  while (used >= kWordSize && is_word_of_zeros(octets + used - kWordSize)) {
    used -= kWordSize;
  }
  while (used > 0 && octets[used - 1] == 0) {
    --used;
  }
  return used > 0 ? used : 0;
}
