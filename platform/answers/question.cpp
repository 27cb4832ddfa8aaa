#include "answers/question.h"

#include <cstring>

namespace stpplatform::answers {

bool Question::read(cmd_action action, const void *attributes, size_t size, uint32_t count) {
  action_ = action;
  count_ = count;
  wire::AttributeReader reader(attributes, size);
  wire::Attribute attribute;
  for (uint32_t i = 0; i < count; ++i) {
    if (!reader.next(&attribute)) {
      return false;
    }
    if (i < kMaxKeys) {
      keys_[i] = attribute;
    }
  }
  return reader.at_end();
}

bool Question::has_keys(stp_key one, stp_key other) const {
  return count_ == 2 && ((keys_[0].token == one && keys_[1].token == other) ||
                         (keys_[0].token == other && keys_[1].token == one));
}

const wire::Attribute &Question::key(stp_key key) const {
  return keys_[0].token == key ? keys_[0] : keys_[1];
}

uint32_t Question::number(stp_key number_key) const {
  uint32_t number = 0;
  std::memcpy(&number, key(number_key).value, sizeof number);
  return number;
}

bool Question::tree(stp_key tree_key, uint32_t *tree) const {
  const wire::Attribute &list = key(tree_key);
  if (list.length != wire::range_list_length(1)) {
    return false;
  }
  cmd_range range;
  std::memcpy(&range, static_cast<const uint8_t *>(list.value) + sizeof(cmd_range_list), sizeof range);
  *tree = range.first;
  return range.first == range.last;
}

}  // namespace stpplatform::answers
