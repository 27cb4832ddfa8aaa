#include "random_switch.h"

#include <optional>
#include <string>
#include <utility>

#include "model/numbering.h"

using stpswitch::Guard;
using stpswitch::Inconsistency;
using stpswitch::LinkType;
using stpswitch::PathCostMethod;
using stpswitch::PortRole;
using stpswitch::SpanningTreeMode;
using stpswitch::SwitchState;

namespace {

// One value in so many is unknown.
constexpr uint32_t kUnknownOneIn = 5;

template <class T>
std::optional<T> perhaps(Draw *draw, T value) {
  return draw->one_in(kUnknownOneIn) ? std::nullopt : std::optional<T>(std::move(value));
}

std::optional<bool> perhaps_flag(Draw *draw) { return perhaps(draw, draw->one_in(2)); }

std::optional<uint32_t> perhaps_number(Draw *draw) {
  return perhaps(draw, draw->one_in(4) ? draw->any() : draw->below(3));
}

template <class T>
std::optional<T> perhaps_among(Draw *draw, const std::vector<T> &choices) {
  return perhaps(draw, draw->among(choices));
}

// The identifiers that a switch uses: neighbours, some far away, and those at the ends.
std::vector<uint32_t> random_ids(Draw *draw, uint32_t most) {
  std::vector<uint32_t> ids;
  const uint32_t count = draw->below(most + 1);
  for (uint32_t id = 1 + draw->below(3); ids.size() < count && id <= stpswitch::kMaxVlan;) {
    ids.push_back(id);
    id += draw->one_in(6) ? 1 + draw->below(900) : 1 + draw->below(3);
  }
  if (draw->one_in(3)) {
    ids.push_back(stpswitch::kMaxVlan);
  }
  return ids;
}

stpswitch::IdSet random_subset(Draw *draw, const std::vector<uint32_t> &ids, uint32_t one_in) {
  stpswitch::IdSet set;
  for (const uint32_t id : ids) {
    if (draw->one_in(one_in)) {
      set.insert(id);
    }
  }
  return set;
}

void draw_interface(Draw *draw, const std::vector<uint32_t> &vlans, const std::vector<uint32_t> &trees,
                    stpswitch::Interface *interface) {
  interface->vlans = random_subset(draw, vlans, draw->one_in(4) ? 8 : 2);
  interface->path_cost = perhaps_number(draw);
  interface->root_guard = perhaps_flag(draw);
  interface->loop_guard = perhaps_among<Guard>(draw, {Guard::kEnabled, Guard::kDisabled, Guard::kDefault});
  interface->link_type =
      perhaps_among<LinkType>(draw, {LinkType::kPointToPoint, LinkType::kShared, LinkType::kAuto});
  interface->pre_standard_mst = perhaps_flag(draw);
  interface->link_up = perhaps(draw, !draw->one_in(4));
  interface->edge = perhaps_flag(draw);
  interface->boundary = perhaps_flag(draw);
  interface->peer = perhaps_flag(draw);
  interface->dispute = perhaps_flag(draw);
  interface->pre_standard_neighbor = perhaps_flag(draw);
  const std::vector<PortRole> roles = {PortRole::kDisabled, PortRole::kRoot, PortRole::kDesignated,
                                       PortRole::kAlternate, PortRole::kBackup};
  interface->role.elsewhere = perhaps_among(draw, roles);
  for (const PortRole role : roles) {
    if (draw->one_in(3)) {
      interface->role.exceptions[role] = random_subset(draw, trees, 3);
    }
  }
  for (const Inconsistency kind :
       {Inconsistency::kRoot, Inconsistency::kLoop, Inconsistency::kPvid, Inconsistency::kType}) {
    if (draw->one_in(3)) {
      interface->inconsistencies[kind] = random_subset(draw, trees, draw->one_in(2) ? 2 : 12);
    }
  }
}

std::optional<stpswitch::BridgeId> perhaps_bridge(Draw *draw) {
  const stpswitch::BridgeId id{draw->among<uint16_t>({0, 0x1000, 0x8000, 0xF000}),
                               {0, 0, 0x5E, 0, 0x53, static_cast<uint8_t>(draw->below(3))}};
  return perhaps(draw, id);
}

stpswitch::Timers random_timers(Draw *draw) {
  return {perhaps_number(draw), perhaps_number(draw), perhaps_number(draw)};
}

stpswitch::TreeSettings random_settings(Draw *draw) {
  using stpswitch::ProtocolVersion;
  return {perhaps_among<uint32_t>(draw, {0, 0x1000, 0x8000, 0xF000}), random_timers(draw),
          perhaps_number(draw),
          perhaps_among<ProtocolVersion>(
              draw, {ProtocolVersion::kStp, ProtocolVersion::kRstp, ProtocolVersion::kMstp})};
}

// What the standard's objects have of a port. Of the others many have nothing of it.
void draw_standard(Draw *draw, stpswitch::Interface *interface) {
  using stpswitch::PortState;
  interface->forward_transitions = perhaps_number(draw);
  interface->priority = perhaps_among<uint32_t>(draw, {0, 16, 128, 240});
  interface->admin_edge = perhaps_flag(draw);
  interface->numbers.if_mib_index = perhaps_number(draw);
  interface->numbers.port_id = draw->one_in(2) ? std::nullopt : perhaps(draw, draw->below(65536));
  if (draw->one_in(2)) {
    interface->designated = {perhaps_bridge(draw), perhaps_bridge(draw), perhaps_number(draw),
                             perhaps(draw, draw->below(65536))};
  }
  interface->state.elsewhere =
      draw->one_in(2) ? std::nullopt
                      : perhaps_among<PortState>(draw, {PortState::kBlocking, PortState::kForwarding});
}

// Of each tree that there may be: how often its topology has changed is told, or would be counted.
void draw_trees(Draw *draw, const std::vector<uint32_t> &trees, const std::vector<uint32_t> &ports,
                SwitchState *state) {
  if (!draw->one_in(kUnknownOneIn)) {
    state->bridge.address = {0, 0, 0x5E, 0, 0x53, static_cast<uint8_t>(draw->below(3))};
  }
  state->bridge.settings = random_settings(draw);
  state->bridge.root = {perhaps_bridge(draw), random_timers(draw)};
  for (const uint32_t id : trees) {
    stpswitch::Tree &tree = state->trees[id];
    tree.observed.topology_changes = draw->below(100);
    if (draw->one_in(3)) {
      tree.settings = random_settings(draw);
      tree.observed.bridge_id = perhaps_bridge(draw);
      tree.observed.root_id = perhaps_bridge(draw);
      tree.observed.root_cost = perhaps_number(draw);
      tree.observed.root_port = draw->one_in(2) ? std::nullopt : perhaps_among(draw, ports);
      tree.observed.timers_in_force = random_timers(draw);
    }
  }
}

void draw_region(Draw *draw, SwitchState *state) {
  state->mst.name = perhaps(draw, std::string(draw->below(33), 'r'));
  state->mst.revision = perhaps_number(draw);
  state->mst.max_hops = perhaps_number(draw);
  if (draw->one_in(2)) {
    state->mst.pre_standard_digest.emplace().fill(static_cast<uint8_t>(draw->any()));
  }
  state->mst_cist.remaining_hops = perhaps_number(draw);
  state->mst_cist.regional_root_priority = perhaps_number(draw);
  state->mst_cist.internal_root_path_cost = perhaps_number(draw);
  if (!draw->one_in(kUnknownOneIn)) {
    state->mst_cist.regional_root_mac.emplace().fill(static_cast<uint8_t>(draw->any()));
  }
}

}  // namespace

const std::vector<std::string> &users_to_refuse() {
  static const std::vector<std::string> kUsers = {"guest", "gues", "guestx", std::string(CMD_USER_MAX, 'u'),
                                                  ""};
  return kUsers;
}

SwitchState random_switch(Draw *draw) {
  SwitchState state;
  const uint32_t mode = draw->below(9);
  if (mode != 0) {
    state.settings.mode = mode % 2 == 0 ? SpanningTreeMode::kMst : SpanningTreeMode::kRapidPvst;
  }
  state.settings.path_cost_method =
      perhaps_among<PathCostMethod>(draw, {PathCostMethod::kShort, PathCostMethod::kLong});
  state.settings.loop_guard_default = perhaps_flag(draw);
  draw_region(draw, &state);

  const std::vector<uint32_t> vlans = random_ids(draw, 30);
  const std::vector<uint32_t> instances = random_ids(draw, 10);
  std::vector<uint32_t> trees = state.settings.mode == SpanningTreeMode::kMst ? instances : vlans;
  trees.push_back(0);
  state.rapid_pvst.disabled_vlans = random_subset(draw, vlans, 5);
  for (const uint32_t id : instances) {
    state.mst_instances[id].remaining_hops = perhaps_number(draw);
  }
  for (const uint32_t vlan : vlans) {
    if (!instances.empty() && !draw->one_in(3)) {
      state.mst_instances[draw->among(instances)].vlans.insert(vlan);
    }
  }

  // In another order than that of the interfaces. The stride has no divisor in common with the number of
  // ports.
  constexpr uint32_t kMostPorts = 80;
  constexpr uint32_t kStride = 33;
  const bool has_own_numbers = draw->one_in(2);
  std::vector<uint32_t> bridge_ports = {0, 4242};
  const uint32_t channels = draw->below(5);
  for (uint32_t number = 1; number <= channels; ++number) {
    stpswitch::PortChannel &channel = state.port_channels[number];
    draw_interface(draw, vlans, trees, &channel);
    channel.numbers = stpswitch::channel_numbers(number);
    draw_standard(draw, &channel);
    bridge_ports.push_back(channel.numbers.bridge_port);
    if (has_own_numbers) {
      channel.numbers.own_number = kMostPorts + number;
    }
    if (draw->one_in(2)) {
      channel.link_up.reset();
    }
  }
  // More than one word of members now and then.
  const uint32_t ports = draw->one_in(4) ? draw->below(kMostPorts) : draw->below(20);
  for (uint32_t number = 1 + draw->below(2); number <= ports; number += 1 + draw->below(3) / 2) {
    const bool is_member = channels != 0 && draw->one_in(4);
    const bool has_own_number = !is_member || draw->one_in(2);
    stpswitch::Port &port = state.ports[has_own_number ? number : stpswitch::kFirstMember + number];
    draw_interface(draw, vlans, trees, &port);
    port.numbers = has_own_number ? stpswitch::port_numbers(number)
                                  : stpswitch::member_numbers(stpswitch::kFirstMember + number);
    draw_standard(draw, &port);
    bridge_ports.push_back(port.numbers.bridge_port);
    if (has_own_numbers) {
      port.numbers.own_number = 1 + (number * kStride) % kMostPorts;
    }
    port.channel = is_member ? 1 + draw->below(channels) : 0;
    port.half_duplex = perhaps_flag(draw);
    port.switchport = is_member || !draw->one_in(6);
  }

  std::vector<uint32_t> all_trees = vlans;
  all_trees.insert(all_trees.end(), instances.begin(), instances.end());
  all_trees.push_back(0);
  draw_trees(draw, all_trees, bridge_ports, &state);

  for (const std::string &user : users_to_refuse()) {
    if (draw->one_in(8)) {
      state.access.refused_users.push_back(user);
    }
  }
  if (draw->one_in(8)) {
    state.access.refused_users.emplace_back(CMD_USER_MAX + 1, 'u');  // nobody's name
  }
  return state;
}
