// The trees of an image, and their ports by the numbers that the bridge itself gives them.
#include "answers/image.h"
#include "answers/search.h"

namespace stpplatform::answers {

const wire::ImageTree *Image::first_tree_from(uint32_t tree) const {
  const uint32_t position = search(0, trees_.count, &latest_tree_, [this, tree](uint32_t candidate) {
    return load_shared(trees_[candidate].tree) < tree;
  });
  return position < trees_.count ? &trees_[position] : nullptr;
}

const wire::ImageTree *Image::find_tree(uint32_t tree) const {
  const wire::ImageTree *found = first_tree_from(tree);
  return found != nullptr && load_shared(found->tree) == tree ? found : nullptr;
}

bool Image::count_ports(uint32_t tree, uint32_t *count) const {
  uint32_t first = 0;
  uint32_t end = 0;
  if (!find_ports_of(tree, &first, &end)) {
    return false;
  }
  *count = end - first;
  return true;
}

cmd_result Image::find_port_by_number(uint32_t tree, uint32_t number, cmd_action action,
                                      TreePort *found) const {
  uint32_t first = 0;
  uint32_t end = 0;
  if (tree >= wire::kTrees) {
    return CMD_NO_ENTRY;
  }
  if (!find_ports_of(tree, &first, &end)) {
    return CMD_BAD_REPLY;
  }
  // Where an interface is none of the image's, its number is 0.
  const auto number_at = [this](uint32_t place) {
    const uint32_t interface = load_shared(by_number_[place]);
    return interface < interfaces_.count ? uint32_t{load_shared(bridge_ports_[interface].number)} : 0;
  };
  const bool wants_next = action == CMD_ACTION_GET_NEXT;
  const uint32_t place = search(first, end, &latest_number_, [&](uint32_t candidate) {
    return wants_next ? number_at(candidate) <= number : number_at(candidate) < number;
  });
  if (place == end || (!wants_next && number_at(place) != number)) {
    return CMD_NO_ENTRY;
  }
  const uint32_t interface = load_shared(by_number_[place]);
  const uint32_t position = first_tree_port(first, end, interface);
  const cmd_result result = position < end ? take(position, found) : CMD_BAD_REPLY;
  return result == CMD_OK && load_shared(found->entry->interface) != interface ? CMD_BAD_REPLY : result;
}

cmd_result Image::find_designated(const wire::ImageTreePort &port,
                                  const wire::ImageDesignated **found) const {
  const uint32_t number = load_shared(port.designated);
  if (number > designated_.count) {
    return CMD_BAD_REPLY;
  }
  if (number == 0) {
    return CMD_NO_ENTRY;
  }
  *found = &designated_[number - 1];
  return CMD_OK;
}

}  // namespace stpplatform::answers
