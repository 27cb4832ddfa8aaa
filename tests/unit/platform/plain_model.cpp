#include "plain_model.h"

#include <algorithm>

#include "model/derived.h"
#include "protocol_numbers.h"
#include "wire/if_index.h"

using stpswitch::Inconsistency;
using stpswitch::LinkType;
using stpswitch::PathCostMethod;
using stpswitch::PortRole;

namespace {

constexpr uint32_t kTreeNumbers = 4096;
constexpr uint32_t kEnabled = 1;
constexpr uint32_t kDisabled = 2;

const ReplyContent kNoEntry = {CMD_NO_ENTRY};
const ReplyContent kUnknownKey = {CMD_UNKNOWN_KEY};
const ReplyContent kBadRequest = {CMD_BAD_REQUEST};

bool overlap(const stpswitch::VlanSet &vlans, const std::set<uint32_t> &others) {
  return std::any_of(others.begin(), others.end(), [&](uint32_t vlan) { return vlans.contains(vlan); });
}

bool has_inconsistency(const stpswitch::Interface &interface, Inconsistency kind, uint32_t tree) {
  for (const auto &[present, trees] : interface.inconsistencies) {
    if (present == kind && trees.contains(tree)) {
      return true;
    }
  }
  return false;
}

std::optional<PortRole> stated_role(const stpswitch::Interface &interface, uint32_t tree) {
  for (const auto &[role, trees] : interface.role.exceptions) {
    if (trees.contains(tree)) {
      return role;
    }
  }
  return interface.role.elsewhere;
}

std::optional<bool> point_to_point(const std::optional<LinkType> &type, const std::optional<bool> &is_half) {
  if (type == LinkType::kPointToPoint) {
    return true;
  }
  if (type == LinkType::kShared) {
    return false;
  }
  if (type == LinkType::kAuto && is_half) {
    return !*is_half;
  }
  return std::nullopt;
}

// Whether the keys are exactly these, in any order.
bool has_keys(const PlainQuestion &question, std::vector<uint32_t> tokens) {
  std::vector<uint32_t> present;
  for (const PlainQuestion::Key &key : question.keys) {
    present.push_back(key.token);
  }
  std::sort(present.begin(), present.end());
  std::sort(tokens.begin(), tokens.end());
  return present == tokens;
}

const PlainQuestion::Key &key_of(const PlainQuestion &question, uint32_t token) {
  return *std::find_if(question.keys.begin(), question.keys.end(),
                       [token](const PlainQuestion::Key &key) { return key.token == token; });
}

// The one tree that the key names.
std::optional<uint32_t> tree_of(const PlainQuestion &question, uint32_t token) {
  const auto &ranges = key_of(question, token).ranges;
  return ranges.size() == 1 && ranges[0].first == ranges[0].last ? std::optional(ranges[0].first)
                                                                 : std::nullopt;
}

}  // namespace

PlainModel::PlainModel(const stpswitch::SwitchState &state) : state_(state) {
  find_interfaces();
  find_trees();
  find_rows();
}

void PlainModel::find_interfaces() {
  const bool runs = state_.settings.mode.has_value();
  for (const auto &[number, channel] : state_.port_channels) {
    std::optional<bool> link = channel.link_up;
    if (!link) {
      bool has_up = false;
      bool has_unknown = false;
      for (const auto &[port_number, port] : state_.ports) {
        has_up = has_up || (port.channel == number && port.link_up == true);
        has_unknown = has_unknown || (port.channel == number && !port.link_up);
      }
      link = has_up ? std::optional(true) : has_unknown ? std::nullopt : std::optional(false);
    }
    interfaces_.push_back({channel.numbers.if_index, runs ? channel.numbers.bridge_port : 0, 0, 0, true, runs,
                           link, point_to_point(channel.link_type, false), &channel});
  }
  for (const auto &[number, port] : state_.ports) {
    const uint32_t pc_if_index =
        port.channel == 0 ? 0 : stpplatform::wire::if_index_of(IF_TYPE_PORT_CHANNEL, port.channel);
    interfaces_.push_back({port.numbers.if_index, runs ? port.numbers.bridge_port : 0, port.channel,
                           pc_if_index, port.switchport, runs && port.switchport && port.channel == 0,
                           port.link_up, point_to_point(port.link_type, port.half_duplex), &port});
  }
}

void PlainModel::find_trees() {
  if (!state_.settings.mode) {
    return;
  }
  for (uint32_t vlan = stpswitch::kMinVlan; vlan <= stpswitch::kMaxVlan; ++vlan) {
    bool is_in_use = false;
    for (const Interface &interface : interfaces_) {
      is_in_use = is_in_use || (interface.is_bridge_port && interface.stated->vlans.contains(vlan));
    }
    uint32_t instance = 0;
    for (const auto &[id, mapped] : state_.mst_instances) {
      if (mapped.vlans.contains(vlan)) {
        instance = id;
      }
    }
    mst_vlans_[instance].insert(vlan);
    if (is_in_use) {
      vlans_in_use_.insert(vlan);
      if (!is_mst() && !state_.rapid_pvst.disabled_vlans.contains(vlan)) {
        running_trees_.insert(vlan);
      }
    }
  }
  mst_vlans_[0];
  for (const auto &[id, mapped] : state_.mst_instances) {
    mst_vlans_[id];
  }
  if (is_mst()) {
    for (const auto &[id, vlans] : mst_vlans_) {
      running_trees_.insert(id);
    }
  }
}

void PlainModel::find_rows() {
  for (const uint32_t tree : running_trees_) {
    for (const Interface &port : interfaces_) {
      const bool takes_part = is_mst() ? tree == 0 || overlap(port.stated->vlans, mst_vlans_[tree])
                                       : port.stated->vlans.contains(tree);
      if (!port.is_bridge_port || !takes_part) {
        continue;
      }
      const std::optional<PortRole> role = stated_role(*port.stated, tree);
      Row row{tree, &port, std::nullopt, 0, false, false};
      if (role) {
        row.role = static_cast<uint32_t>(port.link == false ? PortRole::kDisabled : *role);
      }
      if (!is_mst()) {
        row.pvid_and_type = (has_inconsistency(*port.stated, Inconsistency::kPvid, tree) ? 1U : 0U) +
                            (has_inconsistency(*port.stated, Inconsistency::kType, tree) ? 2U : 0U);
      }
      row.is_loop_inconsistent = has_inconsistency(*port.stated, Inconsistency::kLoop, tree);
      row.is_root_inconsistent = has_inconsistency(*port.stated, Inconsistency::kRoot, tree);
      rows_.push_back(row);
    }
  }
}

const PlainModel::Interface *PlainModel::find(uint32_t if_index) const {
  for (const Interface &interface : interfaces_) {
    if (interface.if_index == if_index) {
      return &interface;
    }
  }
  return nullptr;
}

std::set<uint32_t> PlainModel::members_of(const std::set<uint32_t> &vlans) const {
  std::set<uint32_t> ports;
  for (const Interface &interface : interfaces_) {
    if (interface.is_bridge_port && overlap(interface.stated->vlans, vlans)) {
      ports.insert(interface.base_port);
    }
  }
  return ports;
}

// The row that has the key, or the first one behind it. Interface 0 stands for a tree, which must run.
std::optional<PlainModel::Row> PlainModel::find_row(const PlainQuestion &question, uint32_t tree,
                                                    uint32_t if_index, IsMeant is_meant) const {
  const bool wants_next = question.action == CMD_ACTION_GET_NEXT;
  if (tree >= kTreeNumbers || (wants_next && if_index == 0 && !running_trees_.contains(tree))) {
    return std::nullopt;
  }
  for (const Row &row : rows_) {
    const bool is_it = row.tree == tree && row.port->if_index == if_index;
    const bool is_behind = row.tree > tree || (row.tree == tree && row.port->if_index > if_index);
    if ((wants_next ? is_behind : is_it) && is_meant(row)) {
      return row;
    }
  }
  return std::nullopt;
}

const PlainModel::Interface *PlainModel::find_bridge_port(const PlainQuestion &question,
                                                          uint32_t if_index) const {
  for (const Interface &interface : interfaces_) {
    const bool is_it = question.action == CMD_ACTION_GET_NEXT ? interface.if_index > if_index
                                                              : interface.if_index == if_index;
    if (is_it && interface.is_bridge_port) {
      return &interface;
    }
  }
  return nullptr;
}

ReplyContent PlainModel::answer(const PlainQuestion &question) const {
  const auto &refused = state_.access.refused_users;
  if (std::find(refused.begin(), refused.end(), question.user) != refused.end()) {
    return {CMD_REFUSED};
  }
  switch (question.command) {
    case protocol::kGlobalSettings:
      return global_settings(question);
    case protocol::kRapidPvstPorts:
      return has_keys(question, {protocol::kInterfaceKey}) ? ports(question) : ports_of_trees(question);
    case protocol::kMstPorts:
      return has_keys(question, {protocol::kMstInterfaceKey}) ? ports(question) : ports_of_trees(question);
    case protocol::kMstRegion:
      return mst_region(question);
    case protocol::kVlanTrees:
      return vlan_trees(question);
    case protocol::kPortInconsistencies:
    case protocol::kRootInconsistencies:
    case protocol::kLoopInconsistencies:
      return inconsistencies(question);
    case protocol::kRootGuard:
    case protocol::kLoopGuard:
    case protocol::kPortSettings:
      return has_keys(question, {protocol::kInterfaceKey}) ? ports(question) : kUnknownKey;
    case protocol::kMstInstances:
      return mst_instances(question);
    case protocol::kBridgeTrees:
      return bridge_trees(question);
    case protocol::kBridgePorts:
      return bridge_ports_of_tree(question);
    default:
      return {CMD_UNKNOWN_COMMAND};
  }
}

ReplyContent PlainModel::global_settings(const PlainQuestion &question) const {
  if (!has_keys(question, {protocol::kGlobalSettingsKey})) {
    return kUnknownKey;
  }
  if (question.action != CMD_ACTION_GET) {
    return kNoEntry;
  }
  ReplyContent reply;
  reply.add(protocol::kMode, state_.settings.mode);
  reply.add(protocol::kPathCostMethod, state_.settings.path_cost_method);
  reply.add(protocol::kPathCostOperMethod, is_mst() && state_.settings.path_cost_method
                                               ? std::optional(PathCostMethod::kLong)
                                               : state_.settings.path_cost_method);
  reply.add(protocol::kLoopGuardDefault, state_.settings.loop_guard_default);
  reply.add(protocol::kHops, state_.mst.max_hops);
  return reply;
}

ReplyContent PlainModel::mst_region(const PlainQuestion &question) const {
  if (!question.keys.empty() && !has_keys(question, {protocol::kMstDigestsKey})) {
    return kUnknownKey;
  }
  if (question.action != CMD_ACTION_GET) {
    return kNoEntry;
  }
  ReplyContent reply;
  reply.add(protocol::kMstRegionRevision, state_.mst.revision);
  if (state_.mst.name) {
    reply.add_octets(protocol::kMstRegionName, state_.mst.name->data(), state_.mst.name->size());
  }
  const auto digest = stpswitch::mst_config_digest(state_);  // other tests know it by heart
  if (digest) {
    reply.add_octets(protocol::kMstConfigDigest, digest->data(), digest->size());
  }
  const auto &pre_standard = state_.mst.pre_standard_digest ? state_.mst.pre_standard_digest : digest;
  if (pre_standard) {
    reply.add_octets(protocol::kMstPreStandardDigest, pre_standard->data(), pre_standard->size());
  }
  return reply;
}

ReplyContent PlainModel::vlan_trees(const PlainQuestion &question) const {
  if (!has_keys(question, {protocol::kVlanTreeKey})) {
    return kUnknownKey;
  }
  const std::optional<uint32_t> asked = tree_of(question, protocol::kVlanTreeKey);
  if (!asked) {
    return kBadRequest;
  }
  ReplyContent reply;
  reply.add(protocol::kMode, state_.settings.mode);
  if (is_mst()) {
    return reply;
  }
  for (const uint32_t vlan : vlans_in_use_) {
    if (question.action == CMD_ACTION_GET_NEXT ? vlan > *asked : vlan == *asked) {
      reply.add(protocol::kTree, vlan);
      reply.add(protocol::kVlanTreeState, running_trees_.contains(vlan) ? 1U : 0U);
      return reply;
    }
  }
  return kNoEntry;
}

ReplyContent PlainModel::mst_instances(const PlainQuestion &question) const {
  if (!has_keys(question, {protocol::kMstTreeKey})) {
    return kUnknownKey;
  }
  const std::optional<uint32_t> asked = tree_of(question, protocol::kMstTreeKey);
  if (!asked) {
    return kBadRequest;
  }
  if (!is_mst()) {
    return kNoEntry;
  }
  for (const auto &[id, vlans] : mst_vlans_) {
    if (question.action == CMD_ACTION_GET_NEXT ? id <= *asked : id != *asked) {
      continue;
    }
    const stpswitch::MstCist &cist = state_.mst_cist;
    const auto hops = id == 0 ? cist.remaining_hops : state_.mst_instances.at(id).remaining_hops;
    const bool is_whole =
        hops &&
        (id != 0 || (cist.regional_root_mac && cist.regional_root_priority && cist.internal_root_path_cost));
    if (!is_whole) {
      return kNoEntry;
    }
    ReplyContent reply;
    reply.add(protocol::kTree, id);
    reply.add(protocol::kHops, hops);
    if (id == 0) {
      reply.add_octets(protocol::kRegionalRootMac, cist.regional_root_mac->data(),
                       cist.regional_root_mac->size());
      reply.add(protocol::kRegionalRootPriority, cist.regional_root_priority);
      reply.add(protocol::kInternalRootPathCost, cist.internal_root_path_cost);
    }
    return reply;
  }
  return kNoEntry;
}

ReplyContent PlainModel::ports_of_trees(const PlainQuestion &question) const {
  const bool is_of_mst = question.command == protocol::kMstPorts;
  const uint32_t tree_key = is_of_mst ? protocol::kMstTreeKey : protocol::kVlanTreeKey;
  const uint32_t interface_key = is_of_mst ? protocol::kMstInterfaceKey : protocol::kInterfaceKey;
  if (!has_keys(question, {tree_key, interface_key})) {
    return kUnknownKey;
  }
  const std::optional<uint32_t> tree = tree_of(question, tree_key);
  if (!tree) {
    return kBadRequest;
  }
  const auto row =
      find_row(question, *tree, key_of(question, interface_key).interface, [](const Row &) { return true; });
  if (is_of_mst != is_mst() || !row) {
    return kNoEntry;
  }
  const stpswitch::Interface &stated = *row->port->stated;
  ReplyContent reply;
  reply.add(protocol::kPortTree, row->tree);
  reply.add(protocol::kInterface, row->port->if_index);
  reply.add(protocol::kPathCost, stated.path_cost);
  reply.add(protocol::kPortRole, row->role);
  reply.add(protocol::kEdge, stated.edge);
  if (is_of_mst) {
    reply.add(protocol::kBoundary, stated.boundary);
  }
  reply.add(protocol::kPeer, stated.peer);
  if (is_of_mst) {
    reply.add(protocol::kDispute, stated.dispute);
    reply.add(protocol::kPreStandardPeer, stated.pre_standard_neighbor);
  }
  return reply;
}

ReplyContent PlainModel::inconsistencies(const PlainQuestion &question) const {
  if (!has_keys(question, {protocol::kVlanTreeKey, protocol::kInterfaceKey})) {
    return kUnknownKey;
  }
  const std::optional<uint32_t> tree = tree_of(question, protocol::kVlanTreeKey);
  if (!tree) {
    return kBadRequest;
  }
  IsMeant is_meant = [](const Row &row) { return row.pvid_and_type != 0; };
  if (question.command == protocol::kLoopInconsistencies) {
    is_meant = [](const Row &row) { return row.is_loop_inconsistent; };
  } else if (question.command == protocol::kRootInconsistencies) {
    is_meant = [](const Row &row) { return row.is_root_inconsistent; };
  }
  const auto row = find_row(question, *tree, key_of(question, protocol::kInterfaceKey).interface, is_meant);
  if (!row) {
    return kNoEntry;
  }
  ReplyContent reply;
  reply.add(protocol::kPortTree, row->tree);
  reply.add(protocol::kInterface, row->port->if_index);
  reply.add(protocol::kInconsistency,
            question.command == protocol::kPortInconsistencies ? row->pvid_and_type : 1U);
  return reply;
}

// Asked by interface alone.
ReplyContent PlainModel::ports(const PlainQuestion &question) const {
  const Interface *port = find_bridge_port(question, question.keys[0].interface);
  const bool is_of_mst = question.command == protocol::kMstPorts;
  if (port == nullptr || (is_of_mst && !is_mst())) {
    return kNoEntry;
  }
  const stpswitch::Interface &stated = *port->stated;
  if (is_of_mst && !(stated.edge && stated.boundary && stated.peer && stated.dispute)) {
    return kNoEntry;
  }
  ReplyContent reply;
  reply.add(protocol::kInterface, port->if_index);
  switch (question.command) {
    case protocol::kRapidPvstPorts:
      reply.add(protocol::kPathCost, stated.path_cost);
      reply.add(protocol::kPointToPoint, port->link == true ? port->point_to_point : std::nullopt);
      reply.add(protocol::kEdge, stated.edge);
      reply.add(protocol::kPeer, stated.peer);
      break;
    case protocol::kMstPorts:
      reply.add(protocol::kPathCost, stated.path_cost);
      reply.add(protocol::kEdge, stated.edge);
      reply.add(protocol::kBoundary, stated.boundary);
      reply.add(protocol::kPeer, stated.peer);
      reply.add(protocol::kDispute, stated.dispute);
      reply.add(protocol::kPreStandardPeer, stated.pre_standard_neighbor);
      break;
    case protocol::kRootGuard:
      if (stated.root_guard) {
        reply.add(protocol::kGuard, *stated.root_guard ? kEnabled : kDisabled);
      }
      break;
    case protocol::kLoopGuard:
      reply.add(protocol::kGuard, stated.loop_guard);
      break;
    default:
      reply.add(protocol::kLinkType, stated.link_type);
      reply.add(protocol::kPreStandardMst, stated.pre_standard_mst);
  }
  return reply;
}
