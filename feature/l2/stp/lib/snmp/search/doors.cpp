// The searches that are exported as C routines (stpsnmp/index_search.h). Replies change hands here: what a
// routine leaves behind is its caller's.
#include <optional>

#include "result.h"
#include "search/dual_index.h"
#include "search/port_ids.h"
#include "stpsnmp/index_search.h"

using namespace stpsnmp::search;
using stpsnmp::query::Reply;

namespace {

constexpr uint8_t kDual = 1;  // the entry's key is a tree and an interface

EntryKind kind_of_port(uint32_t command, uint32_t index_token) {
  return {static_cast<stp_command>(command), static_cast<stp_key>(index_token), std::nullopt};
}

EntryKind kind_of_tree_port(uint32_t command, uint32_t index_token, uint32_t tree_token) {
  return {static_cast<stp_command>(command), static_cast<stp_key>(index_token),
          static_cast<stp_key>(tree_token)};
}

int result_of(bool success) { return success ? 0 : stpsnmp::kFailed; }

// Runs a search with a reply of its own where the caller wants one, and hands that over after a success.
template <class Search>
int with_reply(void **reply, const Search &search) {
  Reply found;
  if (!search(reply != nullptr ? &found : nullptr)) {
    return stpsnmp::kFailed;
  }
  if (reply != nullptr) {
    *reply = found.detach();
  }
  return 0;
}

// The same with the row in the caller's variables. After a failure, no reply is left there.
template <class Search>
int with_row(uint32_t *tree_id, uint16_t *port_id, void **reply, const Search &search) {
  TreePort row{*tree_id, *port_id};
  const int result = with_reply(reply, [&](Reply *found) { return search(&row, found); });
  *tree_id = row.tree_id;
  *port_id = row.port_id;
  if (result != 0 && reply != nullptr) {
    *reply = nullptr;
  }
  return result;
}

}  // namespace

int get_stp_entry_from_if_index(uint32_t action, uint8_t dual, uint32_t index_token, uint32_t *if_index,
                                uint32_t tree_token, uint32_t *tree_id, void **reply, uint32_t command) {
  const EntryKind kind = dual == kDual ? kind_of_tree_port(command, index_token, tree_token)
                                       : kind_of_port(command, index_token);
  return with_reply(reply, [&](Reply *found) {
    return fetch_entry(kind, static_cast<cmd_action>(action), tree_id, if_index, found);
  });
}

int validate_port_id_for_snmp_search(uint32_t action, uint32_t *in_if_index, uint32_t *ret_if_index,
                                     uint16_t *port_id, uint8_t *if_type) {
  return result_of(
      validate_by_counting(static_cast<cmd_action>(action), in_if_index, ret_if_index, port_id, if_type));
}

int validate_port_id_for_snmp_search_from_im(uint32_t action, uint32_t *in_if_index, uint32_t *ret_if_index,
                                             uint16_t *port_id, uint8_t stp_flag) {
  uint32_t if_index = 0;
  if (!validate_by_interface_manager(static_cast<cmd_action>(action), stp_flag, port_id, &if_index)) {
    return stpsnmp::kFailed;
  }
  *in_if_index = if_index;
  *ret_if_index = if_index;
  return 0;
}

uint16_t stp_get_next_dot1dportnum(uint16_t base_port, uint8_t stp_flag) {
  return next_port_id(base_port, stp_flag);
}

int check_and_get_next_stp_physical_entry_for_logical(uint32_t tree_token, uint32_t *tree_id,
                                                      uint32_t index_token, uint16_t *port_id,
                                                      uint32_t *if_index, void **reply, uint32_t command) {
  Place place{*tree_id, *if_index};
  Reply held(reply != nullptr ? *reply : nullptr);
  const bool is_found = offer_physical_entry(kind_of_tree_port(command, index_token, tree_token), &place,
                                             port_id, reply != nullptr ? &held : nullptr);
  *tree_id = place.tree;
  *if_index = place.if_index;
  if (reply != nullptr) {
    *reply = held.detach();
  }
  return result_of(is_found);
}

int get_exact_stp_dual_indices_entry(uint32_t index_token, uint16_t *port_id, uint32_t tree_token,
                                     uint32_t *tree_id, void **reply, uint32_t command) {
  return with_row(tree_id, port_id, reply, [&](TreePort *row, Reply *found) {
    return find_exact_row(kind_of_tree_port(command, index_token, tree_token), row, found);
  });
}

int get_next_stp_dual_indices_entry_from_im(uint32_t index_token, uint16_t *port_id, uint32_t tree_token,
                                            uint32_t *tree_id, void **reply, uint32_t command,
                                            uint8_t stp_flag) {
  return with_row(tree_id, port_id, reply, [&](TreePort *row, Reply *found) {
    return find_next_row(kind_of_tree_port(command, index_token, tree_token), stp_flag, row, found);
  });
}
