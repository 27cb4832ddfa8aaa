#include "answers/bridge_ports.h"

namespace stpplatform::answers {

const wire::ImageInterface *find_bridge_port(const Image &image, const Question &question, stp_key key) {
  const uint32_t asked = question.number(key);
  if (question.action() == CMD_ACTION_GET) {
    const wire::ImageInterface *interface = image.find_interface(asked);
    return interface != nullptr && is_bridge_port(*interface) ? interface : nullptr;
  }
  const auto &interfaces = image.interfaces();
  uint32_t position = image.interface_behind(asked);
  while (position < interfaces.count && !is_bridge_port(interfaces[position])) {
    ++position;
  }
  return position < interfaces.count ? &interfaces[position] : nullptr;
}

cmd_result answer_bridge_port(const Image &image, const Question &question, stp_key key, AddValues add_values,
                              Answer *answer) {
  const wire::ImageInterface *port = find_bridge_port(image, question, key);
  if (port == nullptr) {
    return CMD_NO_ENTRY;
  }
  answer->add_number(STP_ATTRIBUTE_INTERFACE, load_shared(port->if_index));
  add_values(*port, answer);
  return CMD_OK;
}

}  // namespace stpplatform::answers
