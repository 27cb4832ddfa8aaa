// Command 122: the trees of the MST region, for the CIST and each MST instance. Outside MST mode there are
// none.
#include <cstdint>
#include <optional>

#include "commands/command.h"
#include "commands/ordered_entries.h"

namespace stpswitch {
namespace {

// Whether all is known of the tree within a region. The agent takes what an entry lacks for zero.
bool is_known(uint32_t id, const std::optional<uint32_t> &remaining_hops, const MstCist &cist) {
  return remaining_hops && (id != kCistId || (cist.regional_root_mac && cist.regional_root_priority &&
                                              cist.internal_root_path_cost));
}

}  // namespace

cmd_result answer_mst_instances(const Switch &the_switch, const CommandRequest &request,
                                ReplyBuilder *reply) {
  if (!has_keys(request, {STP_KEY_MST_TREE})) {
    return CMD_UNKNOWN_KEY;
  }
  const auto asked = asked_tree(request, STP_KEY_MST_TREE);
  if (!asked) {
    return CMD_BAD_REQUEST;
  }
  const SwitchState &state = the_switch.state();
  const auto &entries = the_switch.mst_remaining_hops();
  const auto entry = find_entry(entries, request.action, *asked);
  if (state.settings.mode != SpanningTreeMode::kMst || entry == entries.end()) {
    return CMD_NO_ENTRY;
  }
  const auto [id, remaining_hops] = *entry;
  if (!is_known(id, remaining_hops, state.mst_cist)) {
    return CMD_NO_ENTRY;
  }
  reply->add_number(STP_ATTRIBUTE_TREE, id);
  reply->add_number(STP_ATTRIBUTE_HOPS, remaining_hops);
  if (id == kCistId) {
    reply->add_octets(STP_ATTRIBUTE_REGIONAL_ROOT_MAC, *state.mst_cist.regional_root_mac);
    reply->add_number(STP_ATTRIBUTE_REGIONAL_ROOT_PRIORITY, state.mst_cist.regional_root_priority);
    reply->add_number(STP_ATTRIBUTE_INTERNAL_ROOT_PATH_COST, state.mst_cist.internal_root_path_cost);
  }
  return CMD_OK;
}

}  // namespace stpswitch
