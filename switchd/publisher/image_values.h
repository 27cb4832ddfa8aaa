// Values as fields of the image hold them.
#pragma once

#include <cstdint>
#include <optional>

#include "wire/image.h"

namespace stpswitch {

inline stpplatform::wire::ImageNumber image_number(const std::optional<uint32_t> &number) {
  return {number.value_or(0), number ? 1U : 0U};
}

// Of a flag or an enumeration.
template <class Choice>
uint8_t image_choice(const std::optional<Choice> &choice) {
  return choice ? static_cast<uint8_t>(*choice) : stpplatform::wire::kUnknown;
}

}  // namespace stpswitch
