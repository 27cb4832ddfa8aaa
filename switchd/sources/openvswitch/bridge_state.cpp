#include "sources/openvswitch/bridge_state.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/printable.h"
#include "model/numbering.h"
#include "model/refusal.h"
#include "wire/if_index.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

constexpr int kDecimal = 10;
constexpr int kHexadecimal = 16;

// No name of a port is longer in other sources, either.
constexpr size_t kMaxPortName = 64;

const std::string *value_of(const OvsdbMap &map, const char *key) {
  const auto found = map.find(key);
  return found != map.end() ? &found->second : nullptr;
}

std::optional<uint32_t> parse_number(std::string_view text, int base) {
  uint32_t number = 0;
  const char *const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, base);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::optional<uint32_t> number_in(const OvsdbMap &map, const char *key) {
  const std::string *const text = value_of(map, key);
  return text != nullptr ? parse_number(*text, kDecimal) : std::nullopt;
}

// What is out of its range is ignored by Open vSwitch, too.
struct Range {
  uint32_t min;
  uint32_t max;
};
std::optional<uint32_t> number_in(const OvsdbMap &map, const char *key, const Range &range) {
  const auto number = number_in(map, key);
  return number && *number >= range.min && *number <= range.max ? number : std::nullopt;
}

std::optional<bool> flag_in(const OvsdbMap &map, const char *key) {
  const std::string *const text = value_of(map, key);
  if (text == nullptr || (*text != "true" && *text != "false")) {
    return std::nullopt;
  }
  return *text == "true";
}

// Four digits: that of the priority, and three of the number.
constexpr uint32_t kPortNumberMask = 0x0FFF;
constexpr uint32_t kPortPriorityMask = 0xF000;
constexpr unsigned kPortPriorityShift = 8;

std::optional<uint32_t> port_id_in(const OvsdbMap &map, const char *key) {
  constexpr size_t kDigits = 4;
  const std::string *const text = value_of(map, key);
  return text != nullptr && text->size() == kDigits ? parse_number(*text, kHexadecimal) : std::nullopt;
}

// Such as "8.000.00005e005300": the digits of the priority and the extension stand apart.
std::optional<BridgeId> bridge_id_in(const OvsdbMap &map, const char *key) {
  constexpr size_t kDot = 1;
  const std::string *const text = value_of(map, key);
  if (text == nullptr || text->size() <= kDot || (*text)[kDot] != '.') {
    return std::nullopt;
  }
  std::string without_dot = *text;
  without_dot.erase(kDot, 1);
  try {
    return parse_bridge_id(without_dot);
  } catch (const Refusal &) {
    return std::nullopt;
  }
}

template <class Value, size_t kSize>
std::optional<Value> choice_in(const OvsdbMap &map, const char *key,
                               const std::array<std::pair<std::string_view, Value>, kSize> &choices) {
  const std::string *const text = value_of(map, key);
  if (text == nullptr) {
    return std::nullopt;
  }
  const auto found = std::find_if(choices.begin(), choices.end(),
                                  [text](const auto &choice) { return choice.first == *text; });
  return found != choices.end() ? std::optional(found->second) : std::nullopt;
}

constexpr std::array<std::pair<std::string_view, PortRole>, 5> kRoles = {{
    {"Disabled", PortRole::kDisabled},
    {"Root", PortRole::kRoot},
    {"Designated", PortRole::kDesignated},
    {"Alternate", PortRole::kAlternate},
    {"Backup", PortRole::kBackup},
}};
constexpr std::array<std::pair<std::string_view, PortState>, 4> kStates = {{
    {"Disabled", PortState::kDisabled},
    {"Discarding", PortState::kBlocking},
    {"Learning", PortState::kLearning},
    {"Forwarding", PortState::kForwarding},
}};

// The bridge uses its timers only as long as they fit together (IEEE 802.1D clause 17.14), in seconds.
// Otherwise it keeps some that it had before, which nothing tells.
bool fit_together(uint32_t max_age, uint32_t forward_delay) { return max_age <= 2 * (forward_delay - 1); }

Timers own_timers(const OvsdbMap &config) {
  constexpr const char *kMaxAge = "rstp-max-age";
  constexpr const char *kForwardDelay = "rstp-forward-delay";
  constexpr Range kMaxAges = {6, 40};
  constexpr Range kForwardDelays = {4, 30};
  constexpr uint32_t kDefaultMaxAge = 20;
  constexpr uint32_t kDefaultForwardDelay = 15;
  constexpr uint32_t kHundredths = 100;
  const auto max_age = number_in(config, kMaxAge, kMaxAges);
  const auto forward_delay = number_in(config, kForwardDelay, kForwardDelays);
  Timers timers;
  if (fit_together(max_age.value_or(kDefaultMaxAge), forward_delay.value_or(kDefaultForwardDelay))) {
    if (max_age) {
      timers.max_age = *max_age * kHundredths;
    }
    if (forward_delay) {
      timers.forward_delay = *forward_delay * kHundredths;
    }
  }
  return timers;
}

std::optional<ProtocolVersion> protocol_version(const OvsdbMap &config) {
  constexpr const char *kForced = "rstp-force-protocol-version";
  if (value_of(config, kForced) == nullptr) {
    return ProtocolVersion::kRstp;
  }
  const auto version = number_in(config, kForced);
  if (version == static_cast<uint32_t>(ProtocolVersion::kStp)) {
    return ProtocolVersion::kStp;
  }
  return version == static_cast<uint32_t>(ProtocolVersion::kRstp) ? std::optional(ProtocolVersion::kRstp)
                                                                  : std::nullopt;
}

TreeSettings tree_settings(const BridgeRow &row, const BridgeId &id) {
  constexpr uint32_t kPriorityMask = 0xF000;
  constexpr Range kHoldCounts = {1, 10};
  // The priority is that of the identifier: what is configured may have been rounded.
  return {.priority = id.priority & kPriorityMask,
          .timers = own_timers(row.other_config),
          .hold_count = number_in(row.other_config, "rstp-transmit-hold-count", kHoldCounts),
          .protocol_version = protocol_version(row.other_config)};
}

const VlanSet &all_vlans() {
  static const VlanSet kAll = [] {
    VlanSet vlans;
    for (uint32_t vlan = kMinVlan; vlan <= kMaxVlan; ++vlan) {
      vlans.insert(vlan);
    }
    return vlans;
  }();
  return kAll;
}

// VLAN 0, which Open vSwitch has for frames without a tag, is no VLAN elsewhere.
void insert_vlan(int64_t vlan, VlanSet *vlans) {
  if (vlan >= kMinVlan && vlan <= kMaxVlan) {
    vlans->insert(static_cast<uint32_t>(vlan));
  }
}

VlanSet vlans_of(const PortRow &port) {
  const bool has_one_vlan =
      port.vlan_mode == "access" || port.vlan_mode == "dot1q-tunnel" || (port.vlan_mode.empty() && port.tag);
  const bool is_trunk = port.vlan_mode == "trunk" || port.vlan_mode.empty();
  VlanSet vlans = !has_one_vlan && port.trunks.empty() ? all_vlans() : VlanSet();
  if (!has_one_vlan) {
    for (const int64_t vlan : port.trunks) {
      insert_vlan(vlan, &vlans);
    }
  }
  if (port.tag && (has_one_vlan || !is_trunk)) {
    insert_vlan(*port.tag, &vlans);
  }
  return vlans;
}

// What is said of the segment of a port that is disabled is from before.
Designated designated_of(const OvsdbMap &status, std::optional<PortRole> role) {
  if (!role || role == PortRole::kDisabled) {
    return {};
  }
  return {.root = {},
          .bridge = bridge_id_in(status, "rstp_designated_bridge_id"),
          .cost = number_in(status, "rstp_designated_path_cost"),
          .port = port_id_in(status, "rstp_designated_port_id")};
}

uint32_t tree_of(const WatchedBridge &bridge) { return bridge.vlan.value_or(kCistId); }

void read_bridge_port(const PortRow &row, uint32_t port_id, const WatchedBridge &bridge,
                      Interface *interface) {
  constexpr Range kPathCosts = {1, 200'000'000};
  interface->name = made_printable(row.name, kMaxPortName);
  if (bridge.vlan) {
    interface->vlans.insert(*bridge.vlan);
  } else {
    interface->vlans = vlans_of(row);
  }
  interface->path_cost = number_in(row.other_config, "rstp-path-cost", kPathCosts);
  interface->priority = (port_id & kPortPriorityMask) >> kPortPriorityShift;
  interface->admin_edge = flag_in(row.other_config, "rstp-port-admin-edge");
  interface->auto_edge = flag_in(row.other_config, "rstp-port-auto-edge");
  const uint32_t tree = tree_of(bridge);
  const auto role = choice_in(row.rstp_status, "rstp_port_role", kRoles);
  interface->role.set(tree, role);
  interface->state.set(tree, choice_in(row.rstp_status, "rstp_port_state", kStates));
  interface->designated = designated_of(row.rstp_status, role);
}

std::optional<bool> whether(const std::string &text, std::string_view yes, std::string_view no) {
  if (text != yes && text != no) {
    return std::nullopt;
  }
  return text == yes;
}

// The link of an interface, and its number as IF-MIB has it.
void read_interface(const InterfaceRow &row, Port *port) {
  port->link_up = whether(row.link_state, "up", "down");
  port->half_duplex = whether(row.duplex, "half", "full");
  if (row.ifindex && *row.ifindex > 0 && *row.ifindex <= std::numeric_limits<int32_t>::max()) {
    port->numbers.if_mib_index = static_cast<uint32_t>(*row.ifindex);
  }
}

// Reads one bridge into the state of all.
class BridgeReader {
 public:
  BridgeReader(const OvsdbRows &rows, const std::vector<WatchedBridge> &bridges, size_t place,
               BridgesReading *reading)
      : rows_(rows),
        bridge_(bridges[place]),
        place_(static_cast<uint32_t>(place)),
        is_alone_(bridges.size() == 1),
        reading_(*reading) {}

  // Returns why it has no tree.
  std::string read() {
    const auto found = std::find_if(rows_.bridges().begin(), rows_.bridges().end(),
                                    [this](const auto &entry) { return entry.second.name == bridge_.name; });
    if (found == rows_.bridges().end()) {
      return "does not exist: waiting for 'ovs-vsctl add-br " + bridge_.name + "'";
    }
    const BridgeRow &row = found->second;
    if (row.rstp_enable == false) {
      return row.stp_enable == true
                 ? "runs STP of IEEE 802.1D-1998, of which nothing is read here: RSTP "
                   "takes its place after 'ovs-vsctl set bridge " +
                       bridge_.name + " rstp_enable=true'"
                 : "runs no RSTP: 'ovs-vsctl set bridge " + bridge_.name + " rstp_enable=true' begins it";
    }
    const auto id = bridge_id_in(row.rstp_status, "rstp_bridge_id");
    if (!id) {
      return "has RSTP of which ovs-vswitchd has written nothing into the database yet";
    }
    read_ports(row);
    read_tree(row, *id);
    return {};
  }

 private:
  void read_tree(const BridgeRow &row, const BridgeId &id) {
    Tree tree;
    tree.settings = tree_settings(row, id);
    tree.observed.bridge_id = id;
    tree.observed.root_id = bridge_id_in(row.rstp_status, "rstp_root_id");
    tree.observed.root_cost = number_in(row.rstp_status, "rstp_root_path_cost");
    if (tree.observed.root_id == id) {
      tree.observed.root_port = 0;
      tree.observed.timers_in_force = tree.settings.timers;
    } else if (const auto port_id = port_id_in(row.rstp_status, "rstp_bridge_port_id")) {
      tree.observed.root_port = bridge_port_of(*port_id & kPortNumberMask);
    }
    reading_.state.trees.emplace(tree_of(bridge_), tree);
    if (is_alone_) {
      reading_.state.bridge.address = id.address;
    }
  }

  void read_ports(const BridgeRow &row) {
    for (const RowId &id : row.ports) {
      const auto found = rows_.ports().find(id);
      if (found != rows_.ports().end()) {
        read_port(found->second);
      }
    }
  }

  void read_port(const PortRow &row) {
    const auto port_id = port_id_in(row.rstp_status, "rstp_port_id");
    const uint32_t number = port_id.value_or(0) & kPortNumberMask;
    const bool is_bond = row.interfaces.size() > 1;
    if (number == 0) {
      if (is_bond) {
        leave_out(row, "is a bond, on which Open vSwitch runs no RSTP");
      }
      return;
    }
    const uint32_t last =
        is_alone_ ? (is_bond ? wire::kMaxChannel : wire::kMaxPhysicalPort) : kPortsOfBridge - 1;
    if (number > last) {
      leave_out(row, "has RSTP port number " + std::to_string(number) + ", which is above " +
                         std::to_string(last) + "; 'ovs-vsctl set port " +
                         made_printable(row.name, kMaxPortName) +
                         " other_config:rstp-port-num=N' gives it another one");
      return;
    }
    if (!taken_.insert(number).second) {
      leave_out(row, "has the RSTP port number " + std::to_string(number) + " of another port");
      return;
    }
    is_bond ? read_channel(row, *port_id, number) : read_single(row, *port_id, number);
  }

  void read_single(const PortRow &row, uint32_t port_id, uint32_t number) {
    Port port;
    port.numbers = port_numbers(key_of(number));
    port.numbers.port_id = port_id;
    port.numbers.own_number = number;
    read_bridge_port(row, port_id, bridge_, &port);
    const InterfaceRow *const interface =
        row.interfaces.empty() ? nullptr : interface_of(row.interfaces.front());
    if (interface != nullptr) {
      read_interface(*interface, &port);
    }
    reading_.state.ports.emplace(key_of(number), std::move(port));
  }

  void read_channel(const PortRow &row, uint32_t port_id, uint32_t number) {
    PortChannel channel;
    channel.numbers = channel_numbers(key_of(number));
    channel.numbers.port_id = port_id;
    channel.numbers.own_number = number;
    read_bridge_port(row, port_id, bridge_, &channel);
    reading_.state.port_channels.emplace(key_of(number), std::move(channel));
    for (const RowId &id : row.interfaces) {
      const InterfaceRow *const interface = interface_of(id);
      if (interface != nullptr) {
        read_member(*interface, key_of(number));
      }
    }
  }

  // An interface that Open vSwitch could not open has no number.
  void read_member(const InterfaceRow &row, uint32_t channel) {
    if (!row.ofport || *row.ofport <= 0 || *row.ofport >= kMembersOfBridge) {
      return;
    }
    const uint32_t number = kFirstMember + place_ * kMembersOfBridge + static_cast<uint32_t>(*row.ofport);
    Port member;
    member.name = made_printable(row.name, kMaxPortName);
    member.numbers = member_numbers(number);
    member.channel = channel;
    read_interface(row, &member);
    reading_.state.ports.emplace(number, std::move(member));
  }

  const InterfaceRow *interface_of(const RowId &id) const {
    const auto found = rows_.interfaces().find(id);
    return found != rows_.interfaces().end() ? &found->second : nullptr;
  }

  uint32_t key_of(uint32_t number) const { return is_alone_ ? number : place_ * kPortsOfBridge + number; }

  // The bridge port number of a port that has been read.
  std::optional<uint32_t> bridge_port_of(uint32_t number) const {
    if (!taken_.contains(number)) {
      return std::nullopt;
    }
    const auto port = reading_.state.ports.find(key_of(number));
    return port != reading_.state.ports.end() ? port->second.numbers.bridge_port
                                              : channel_numbers(key_of(number)).bridge_port;
  }

  void leave_out(const PortRow &row, const std::string &why) {
    reading_.left_out.insert("bridge '" + bridge_.name + "': port '" +
                             made_printable(row.name, kMaxPortName) + "' is left out: it " + why);
  }

  const OvsdbRows &rows_;
  const WatchedBridge &bridge_;
  uint32_t place_;
  bool is_alone_;
  BridgesReading &reading_;
  std::set<uint32_t> taken_;  // numbers of the bridge's ports
};

}  // namespace

BridgesReading read_bridges(const OvsdbRows &rows, const std::vector<WatchedBridge> &bridges) {
  BridgesReading reading;
  for (size_t place = 0; place < bridges.size(); ++place) {
    const std::string why = BridgeReader(rows, bridges, place, &reading).read();
    reading.without_tree.push_back(why);
    if (bridges[place].vlan && !why.empty()) {
      reading.state.rapid_pvst.disabled_vlans.insert(*bridges[place].vlan);
    }
  }
  if (reading.state.trees.empty()) {
    reading.state = unknown_state(bridges);
    return reading;
  }
  reading.state.settings.name = joined_names(bridges);
  reading.state.settings.mode = bridges.front().vlan ? SpanningTreeMode::kRapidPvst : SpanningTreeMode::kMst;
  return reading;
}

SwitchState unknown_state(const std::vector<WatchedBridge> &bridges) {
  SwitchState state;
  state.settings.name = joined_names(bridges);
  return state;
}

uint64_t status_interval(const OvsdbRows &rows) {
  // The least interval of Open vSwitch's statistics, which is also what it uses where nobody has set one.
  constexpr uint32_t kLeast = 5000;
  const bool is_written = std::any_of(rows.ports().begin(), rows.ports().end(), [](const auto &entry) {
    return entry.second.has_rstp_statistics && !entry.second.rstp_status.empty();
  });
  return is_written
             ? std::max(kLeast, number_in(rows.other_config(), "stats-update-interval").value_or(kLeast))
             : 0;
}

}  // namespace stpswitch
