// im.h: the interface manager, from the switch's image.
#include "platform/im.h"

#include "channel.h"
#include "export.h"
#include "wire/if_index.h"

namespace answers = stpplatform::answers;
namespace wire = stpplatform::wire;

extern "C" {

STPPLATFORM_EXPORT int im_get_next_ifindex(uint32_t if_index, uint32_t *next) {
  if (next == nullptr) {
    return CMD_INVALID_ARGUMENT;
  }
  uint32_t found = 0;
  const cmd_result result =
      stpplatform::ask_image(stpplatform::Vouching::kJustNow, [&](const answers::Image &image) {
        const auto &interfaces = image.interfaces();
        const uint32_t position = image.interface_behind(if_index);
        if (position == interfaces.count) {
          found = 0;
          return CMD_OK;
        }
        // It may be another one than the search has seen. Whoever steps through all must come to an end.
        found = answers::load_shared(interfaces[position].if_index);
        return found > if_index ? CMD_OK : CMD_BAD_REPLY;  // GCOVR_EXCL_BR_LINE: fuzz.image_writer reaches it
      });
  if (result == CMD_OK) {
    *next = found;
  }
  return result;
}

STPPLATFORM_EXPORT int im_get_ifindex_oper_status_list(im_oper_status_entry *entries, uint32_t count) {
  if (entries == nullptr && count != 0) {
    return CMD_INVALID_ARGUMENT;
  }
  for (uint32_t i = 0; i < count; ++i) {
    uint8_t status = 0;
    const cmd_result result = stpplatform::ask_interface(
        entries[i].if_index, stpplatform::Vouching::kNow,
        [&](const wire::ImageInterface &interface) { status = answers::load_shared(interface.oper_status); });
    if (result != CMD_OK) {
      return result;
    }
    entries[i].oper_status = status;
  }
  return CMD_OK;
}

STPPLATFORM_EXPORT int if_index_get_type(uint32_t if_index, uint8_t *type) {
  const uint32_t found = if_index >> wire::kIfTypeShift;
  if (type == nullptr) {
    return CMD_INVALID_ARGUMENT;
  }
  if (found != IF_TYPE_PORT_CHANNEL && found != IF_TYPE_PHYSICAL) {
    return CMD_NO_ENTRY;
  }
  *type = static_cast<uint8_t>(found);
  return CMD_OK;
}

STPPLATFORM_EXPORT int if_index_eth_port_channel_init(uint32_t *if_index, uint32_t channel) {
  if (if_index == nullptr || channel == 0 || channel > wire::kMaxChannel) {
    return CMD_INVALID_ARGUMENT;
  }
  *if_index = wire::if_index_of(IF_TYPE_PORT_CHANNEL, channel);
  return CMD_OK;
}

STPPLATFORM_EXPORT int check_if_valid_base_port_ifindex(uint32_t if_index, uint8_t selector) {
  bool accepted = false;
  const cmd_result result = stpplatform::ask_interface(
      if_index, stpplatform::Vouching::kJustNow, [&](const wire::ImageInterface &interface) {
        accepted = answers::is_bridge_port(interface) &&
                   (selector == BASE_PORT_ALL || (selector == BASE_PORT_ACTIVE &&
                                                  answers::load_shared(interface.oper_status) == IF_OPER_UP));
      });
  return result == CMD_OK && accepted ? 1 : 0;
}

}  // extern "C"
