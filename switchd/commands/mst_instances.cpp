// Command 122: the trees of the MST region, for the CIST and each MST instance. Outside MST mode there are
// none.
#include "commands/command.h"
#include "commands/rows.h"
#include "model/derived.h"

namespace stpswitch {

cmd_result answer_mst_instances(const Switch &the_switch, const CommandRequest &request,
                                ReplyBuilder *reply) {
  if (!has_keys(request, {Key::kMstInstance})) {
    return CMD_UNKNOWN_KEY;
  }
  const auto asked = asked_tree(request, Key::kMstInstance);
  if (!asked) {
    return CMD_BAD_REQUEST;
  }
  const SwitchState &state = the_switch.state();
  const auto rows = mst_remaining_hops(state);
  const auto row = find_row(rows, request.action, *asked);
  if (state.settings.mode != SpanningTreeMode::kMst || row == rows.end()) {
    return CMD_NO_ENTRY;
  }
  const auto [id, remaining_hops] = *row;
  reply->add_number(Token::kTree, id);
  reply->add_number(Token::kHops, remaining_hops);
  if (id == kCistId) {
    reply->add_octets(Token::kRegionalRootMac, state.mst_cist.regional_root_mac);
    reply->add_number(Token::kRegionalRootPriority, state.mst_cist.regional_root_priority);
    reply->add_number(Token::kInternalRootPathCost, state.mst_cist.internal_root_path_cost);
  }
  return CMD_OK;
}

}  // namespace stpswitch
