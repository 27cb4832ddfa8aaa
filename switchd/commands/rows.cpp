#include "commands/rows.h"

#include <algorithm>
#include <cstring>

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

const wire::Attribute &attribute_of(const CommandRequest &request, Key key) {
  return *std::find_if(request.keys.begin(), request.keys.end(), [key](const wire::Attribute &attribute) {
    return attribute.token == static_cast<uint32_t>(key);
  });
}

}  // namespace

uint32_t asked_interface(const CommandRequest &request) {
  uint32_t if_index = 0;
  std::memcpy(&if_index, attribute_of(request, Key::kInterface).value, sizeof if_index);
  return if_index;
}

std::optional<uint32_t> asked_tree(const CommandRequest &request, Key key) {
  const wire::Attribute &attribute = attribute_of(request, key);
  if (attribute.length != wire::range_list_length(1)) {
    return std::nullopt;
  }
  cmd_range range;
  std::memcpy(&range, static_cast<const uint8_t *>(attribute.value) + sizeof(cmd_range_list), sizeof range);
  if (range.first != range.last) {
    return std::nullopt;
  }
  return range.first;
}

}  // namespace stpswitch
