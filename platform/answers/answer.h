// What a request is answered with: its attributes, laid out as they stand in a message, in the order in which
// they are added.
#pragma once

#include <cstddef>
#include <cstdint>

#include "answers/shared_memory.h"
#include "platform/stp_protocol.h"
#include "wire/attributes.h"
#include "wire/image.h"

namespace stpplatform::answers {

class Answer {
 public:
  // More than the longest one needs: that of a bridge in a tree.
  static constexpr size_t kMaxSize = 384;

  void add_number(stp_attribute attribute, uint32_t value) { add(attribute, &value, sizeof value); }

  // Fields of the image. A value that nobody knows is left out.
  void add(stp_attribute attribute, const wire::ImageNumber &number) {
    if (load_shared(number.is_known) != 0) {
      add_number(attribute, load_shared(number.value));
    }
  }
  void add(stp_attribute attribute, const uint8_t &choice_or_flag) {
    const uint8_t value = load_shared(choice_or_flag);
    if (value != wire::kUnknown) {
      add_number(attribute, value);
    }
  }
  void add_octets(stp_attribute attribute, const uint8_t *octets, uint32_t length);

  // Takes back what was added.
  void clear() { size_ = attribute_count_ = 0; }

  const uint8_t *attributes() const { return attributes_; }
  uint32_t size() const { return size_; }
  uint32_t attribute_count() const { return attribute_count_; }

 private:
  void add(stp_attribute attribute, const void *value, uint32_t length) {
    const size_t used =
        wire::write_attribute(attributes_ + size_, sizeof attributes_ - size_, {attribute, length, value});
    size_ += static_cast<uint32_t>(used);
    attribute_count_ += used != 0 ? 1 : 0;
  }

  uint32_t size_ = 0;
  uint32_t attribute_count_ = 0;
  alignas(uint32_t) uint8_t attributes_[kMaxSize];
};

}  // namespace stpplatform::answers
