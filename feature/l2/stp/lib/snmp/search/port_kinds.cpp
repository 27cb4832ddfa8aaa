// Physical ports come before port-channels in SNMP order, and behind them in the spanning-tree process's: how
// a search gets from the ones to the others.
#include <utility>

#include "platform/im.h"
#include "platform/stp.h"
#include "search/dual_index.h"
#include "search/port_ids.h"

namespace stpsnmp::search {
namespace {

using diagnostics::kTrace;
using diagnostics::shown;
using query::Reply;

// As which the steps log.
constexpr char kPhysical[] = "check_and_get_next_stp_physical_entry_for_logical";
constexpr char kChannel[] = "get_next_stp_channel_entry_in_same_tree";

// The first physical port's entry in the tree, or the one behind it.
bool fetch_physical_entry(const EntryKind &kind, Place *place, Reply *reply) {
  if (fetch_entry(kind, CMD_ACTION_GET, place, reply)) {
    return true;
  }
  STP_LOG(kTrace, "\n%s(%d): returning FAILURE for GET\n", kPhysical, __LINE__);
  if (fetch_entry(kind, CMD_ACTION_GET_NEXT, place, reply)) {
    return true;
  }
  STP_LOG(kTrace, "\n%s(%d): returning FAILURE for GET_NEXT\n", kPhysical, __LINE__);
  return false;
}

// The entry of the port in the tree, or the one behind it as long as it is in the same tree.
bool fetch_from_port_on(const EntryKind &kind, uint16_t port_id, Place *place, Reply *reply) {
  const bool is_converted = stp_dot1dportnum2ifindex(port_id, &place->if_index) == 0;
  if (!is_converted) {
    STP_LOG(kTrace, "\n%s(%d): Error converting %d to if_index\n", kChannel, __LINE__, int{port_id});
    place->if_index = 0;
  }
  if (is_converted && stp_valid_if_index(place->if_index) != 0 &&
      fetch_entry(kind, CMD_ACTION_GET, place, reply)) {
    return true;
  }
  STP_LOG(kTrace, "\n%s(%d): Next search \n", kChannel, __LINE__);
  Place next = *place;
  if (!fetch_entry(kind, CMD_ACTION_GET_NEXT, &next, reply)) {
    STP_LOG(kTrace, "\n%s(%d): Error getting next on tree (%d), if_index(%d) \n", kChannel, __LINE__,
            shown(next.tree), shown(next.if_index));
    return false;
  }
  if (next.tree != place->tree) {
    release(reply);
    STP_LOG(kTrace, "\n%s(%d): does not return on the same tree\n", kChannel, __LINE__);
    return false;
  }
  *place = next;
  return true;
}

}  // namespace

bool find_channel(const EntryKind &kind, uint32_t *tree, uint16_t *port_id, Reply *reply) {
  STP_LOG(kTrace, "\n%s(%d): Looking up stp_channel_entry in tree %d\n", kChannel, __LINE__, shown(*tree));
  if (*tree == 0 || *port_id > kMaxChannelPort) {
    STP_LOG(kTrace, "\n%s(%d): Invalid tree_id(%d) and/or port_id(%d)(%d). \n", kChannel, __LINE__,
            shown(*tree), int{*port_id}, int{kMaxChannelPort});
    return false;
  }
  Place place{*tree, 0};
  if (!fetch_from_port_on(kind, *port_id < kMinChannelPort ? kMinChannelPort : *port_id, &place, reply)) {
    return false;
  }
  *tree = place.tree;
  STP_LOG(kTrace, "\n%s(%d): Search successfull: if_index: %d\n", kChannel, __LINE__, shown(place.if_index));
  if (type_of(place.if_index) != IF_TYPE_PORT_CHANNEL) {
    release(reply);
    STP_LOG(kTrace, "\n%s(%d): does not return port channel.\n", kChannel, __LINE__);
    return false;
  }
  if (stp_ifindex2dot1dportnum(place.if_index, port_id) != 0) {
    release(reply);
    return false;
  }
  return true;
}

bool offer_physical_entry(const EntryKind &kind, Place *place, uint16_t *port_id, Reply *reply) {
  const Place given = *place;
  const uint16_t given_port_id = *port_id;
  const auto give_back = [&] {
    *place = given;
    *port_id = given_port_id;
  };
  STP_LOG(kTrace, "\n%s(%d): if_index: %d, port_index: %d, tree_index: %d\n", kPhysical, __LINE__,
          shown(place->if_index), int{*port_id}, shown(place->tree));
  *port_id = kBeforePhysicalPorts;
  uint32_t physical_if_index = 0;
  uint8_t if_type = 0;
  if (!validate_by_counting(CMD_ACTION_GET_NEXT, &place->if_index, &physical_if_index, port_id, &if_type)) {
    STP_LOG(kTrace, "\n%s(%d): returning FAILURE\n", kPhysical, __LINE__);
    return false;
  }
  place->if_index = physical_if_index;
  STP_LOG(kTrace, "\n%s(%d): Valid if_index: %d", kPhysical, __LINE__, shown(place->if_index));
  Reply found;
  if (!fetch_physical_entry(kind, place, reply != nullptr ? &found : nullptr)) {
    give_back();
    return false;
  }
  if (given.tree < place->tree) {
    STP_LOG(kTrace, "\n%s(%d): Returned tree_index: %d. Returning saved\n", kPhysical, __LINE__,
            shown(place->tree));
    give_back();
    found.release();
  } else {
    STP_LOG(kTrace, "\n%s(%d): Returned tree_index: %d. Returning backend got values\n", kPhysical, __LINE__,
            shown(place->tree));
    if (stp_ifindex2dot1dportnum(place->if_index, port_id) != 0) {
      found.release();
      give_back();
      STP_LOG(kTrace, "\n%s(%d): returning FAILURE\n", kPhysical, __LINE__);
      return false;
    }
    if (reply != nullptr) {
      *reply = std::move(found);
    }
  }
  STP_LOG(kTrace, "\n%s(%d): Returning if_index: %d, port_index: %d, tree_index: %d\n", kPhysical, __LINE__,
          shown(place->if_index), int{*port_id}, shown(place->tree));
  return true;
}

}  // namespace stpsnmp::search
