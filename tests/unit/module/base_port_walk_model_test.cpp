// Walks of the tables that bridge ports index, over hundreds of small random switches, held against a model
// of sets: which ports there are, which of them have what, and what a port is then shown as.
#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <map>
#include <optional>
#include <random>
#include <set>

#include "fake_platform.h"
#include "protocol_numbers.h"
#include "search_test.h"
#include "stpsnmp/lookup_handlers.h"
#include "table_test.h"
#include "walk_test.h"

namespace {

constexpr uint32_t kMst = 4;
constexpr uint32_t kRapidPvst = 5;

constexpr uint8_t kLoopGuard = 117;
constexpr uint8_t kRstpSetting = 55;
constexpr uint8_t kLinkType = 56;
constexpr uint8_t kSmstFlags = 87;
constexpr uint8_t kAdminMode = 91;
constexpr uint8_t kStatus = 92;

constexpr uint8_t kDown = 2;

// Switches to draw, for each column, and each column has its own.
constexpr unsigned kFewSwitches = 16;
constexpr unsigned kAllSwitches = 80;

struct Column {
  const char *name;
  FindVarMethod *handler;
  uint8_t magic;
  uint32_t command;  // and key of the ports' entries
  uint32_t key;
  bool exists_in_rapid_pvst = true;
  bool has_defaults = false;  // for ports that are down
};

void PrintTo(const Column &column, std::ostream *out) { *out << column.name; }

// What the spanning-tree process holds of a port.
using Values = std::map<uint32_t, uint32_t>;

struct Switch {
  uint32_t type;
  std::vector<fake::Interface> interfaces;
  std::map<uint16_t, Values> entries;  // by bridge port
};

// A switch in small: what the tests vary is drawn with the seed.
class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  uint32_t below(uint32_t bound) { return static_cast<uint32_t>(random_() % bound); }

  template <class List>
  auto one_of(const List &values) {
    return values[below(static_cast<uint32_t>(std::size(values)))];
  }

  bool happens_once_in(uint32_t times) { return below(times) == 0; }

  Switch draw() {
    constexpr std::array<uint16_t, 12> kPorts = {1,    129,  130,  131,  132,  140,
                                                 4095, 4096, 4097, 4098, 8191, 65535};
    Switch drawn{happens_once_in(4) ? kRapidPvst : kMst, {}, {}};
    const bool is_sound = happens_once_in(2);  // every port has all that it can have
    const uint32_t density = happens_once_in(16) ? 0 : 1 + below(8);
    for (const uint16_t port : kPorts) {
      if (below(8) < density) {
        drawn.interfaces.push_back(interface(port, is_sound));
        if (is_sound || !happens_once_in(6)) {
          drawn.entries[port] = values(is_sound);
        }
      }
    }
    std::shuffle(drawn.interfaces.begin(), drawn.interfaces.end(), random_);
    return drawn;
  }

 private:
  fake::Interface interface(uint16_t port, bool is_sound) {
    constexpr uint32_t kChannels = 0x16000000;
    constexpr uint32_t kIndexes = 0x1A000000;
    const bool is_member = happens_once_in(5);
    const auto rarely = [this, is_sound] { return !is_sound && happens_once_in(8); };
    fake::Interface drawn{.if_index = kIndexes + 0x10000 * below(8) + port, .port = port};
    drawn.channel_if_index = is_member ? kChannels + 1 : 0;
    drawn.is_base_port = !is_member && !rarely();
    drawn.is_usable = !rarely();
    drawn.has_if_index_of_port = !rarely();
    drawn.is_known_to_channels = !rarely();
    drawn.has_oper_status = !rarely();
    drawn.oper_status = one_of(std::array<uint8_t, 4>{1, 1, kDown, 3});
    for (uint32_t left = below(3); left > 0; --left) {
      drawn.vlans.push_back(one_of(std::array<uint32_t, 6>{0, 1, 10, 2048, 4094, 4095}));
    }
    return drawn;
  }

  Values values(bool is_sound) {
    Values drawn;
    for (const uint32_t token : {protocol::kGuard, protocol::kLinkType, protocol::kPointToPoint,
                                 protocol::kPreStandardMst, protocol::kEdge, protocol::kBoundary,
                                 protocol::kPeer, protocol::kDispute, protocol::kPreStandardPeer}) {
      if (is_sound || !happens_once_in(8)) {
        drawn[token] = below(4) < 3 ? below(3) : static_cast<uint32_t>(random_());
      }
    }
    return drawn;
  }

  std::mt19937 random_;
};

// The octets that a port is served with, or nothing.
using Value = std::optional<std::string>;

Value as_octets(uint32_t shown) {
  const fake::Bytes octets = fake::number(shown);
  return std::string(octets.begin(), octets.end());
}

using Ports = std::set<uint16_t>;

Ports operator&(const Ports &left, const Ports &right) {
  Ports both;
  std::set_intersection(left.begin(), left.end(), right.begin(), right.end(),
                        std::inserter(both, both.end()));
  return both;
}

Ports operator-(const Ports &left, const Ports &right) {
  Ports rest;
  std::set_difference(left.begin(), left.end(), right.begin(), right.end(), std::inserter(rest, rest.end()));
  return rest;
}

class Model {
 public:
  Model(const Switch &modelled, const Column &column) : column_(column), entries_(modelled.entries) {
    const auto ports = [&modelled](auto has_it) {
      Ports found;
      for (const fake::Interface &interface : modelled.interfaces) {
        if (has_it(interface)) {
          found.insert(interface.port);
        }
      }
      return found;
    };
    const Ports found = ports([](const auto &interface) { return interface.has_if_index_of_port; });
    const Ports usable = ports([](const auto &interface) { return interface.is_usable; });
    const Ports members = ports([](const auto &interface) { return interface.channel_if_index != 0; });
    const Ports untold = ports([](const auto &interface) { return !interface.is_known_to_channels; });
    const Ports bridge_ports = ports([](const auto &interface) { return interface.is_base_port; });
    const Ports in_vlans = ports([](const auto &interface) {
      return std::any_of(interface.vlans.begin(), interface.vlans.end(),
                         [](uint32_t vlan) { return vlan >= 1 && vlan <= 4094; });
    });
    down_ = ports(
        [](const auto &interface) { return interface.has_oper_status && interface.oper_status == kDown; });
    if (modelled.type == kMst || column.exists_in_rapid_pvst) {
      exact_ = (found & usable) - members - untold;
      walked_ = found & bridge_ports & in_vlans;
    }
  }

  // What the port's row shows, whether a GET or a walk comes to it.
  Value shown(uint16_t port) const {
    if (column_.has_defaults && down_.contains(port)) {
      return defaults();
    }
    const auto found = entries_.find(port);
    return found == entries_.end() ? std::nullopt : converted(found->second);
  }

  Value get(uint16_t port) const { return exact_.contains(port) ? shown(port) : std::nullopt; }

  // The port that a walk tries next. Where it has no row, the walk ends.
  std::optional<uint16_t> after(uint16_t port) const {
    const auto found = walked_.upper_bound(port);
    return found == walked_.end() ? std::nullopt : std::optional(*found);
  }

  // The rows of a walk from the beginning, up to the first port without one.
  std::map<uint16_t, std::string> walk() const {
    std::map<uint16_t, std::string> rows;
    for (const uint16_t port : walked_) {
      const Value value = shown(port);
      if (!value) {
        break;
      }
      rows[port] = *value;
    }
    return rows;
  }

  size_t ports_of_a_walk() const { return walked_.size(); }

 private:
  Value defaults() const {
    switch (column_.magic) {
      case kLinkType:
        return as_octets(3);
      case kSmstFlags:
        return std::string(1, '\0');
      default:
        return as_octets(1);
    }
  }

  Value converted(const Values &values) const {
    const auto held = [&values](uint32_t token) {
      const auto found = values.find(token);
      return found == values.end() ? std::nullopt : std::optional(found->second);
    };
    switch (column_.magic) {
      case kLoopGuard:
      case kRstpSetting: {
        const auto setting = held(column_.magic == kLoopGuard ? protocol::kGuard : protocol::kLinkType);
        return setting ? as_octets(*setting) : std::nullopt;
      }
      case kLinkType: {
        const auto is_point_to_point = held(protocol::kPointToPoint);
        return as_octets(!is_point_to_point ? 3 : *is_point_to_point != 0 ? 1 : 2);
      }
      case kAdminMode: {
        const auto mode = held(protocol::kPreStandardMst);
        return mode ? as_octets(*mode != 0 ? 1 : 2) : std::nullopt;
      }
      case kStatus: {
        const auto status = held(protocol::kPreStandardPeer);
        return as_octets(!status ? 1 : *status == 0 ? 3 : 2);
      }
      default: {
        const auto edge = held(protocol::kEdge);
        const auto boundary = held(protocol::kBoundary);
        const auto peer = held(protocol::kPeer);
        const auto dispute = held(protocol::kDispute);
        if (!edge || !boundary || !peer || !dispute) {
          return std::string(1, '\0');
        }
        const unsigned flags = (*edge != 0 ? 0x80U : 0) + (*boundary != 0 ? 0x40U : 0) +
                               (*peer == 1 ? 0x10U : 0) + (*dispute != 0 ? 0x08U : 0);
        return std::string(1, static_cast<char>(flags));
      }
    }
  }

  Column column_;
  std::map<uint16_t, Values> entries_;
  Ports down_;
  Ports exact_;   // the ports that a GET finds
  Ports walked_;  // those that a walk comes to
};

class BasePortWalk : public TableTest, public ::testing::WithParamInterface<Column> {
 protected:
  BasePortWalk() : TableTest(GetParam().handler) {}

  static unsigned first_seed() { return GetParam().magic * kAllSwitches; }
  static unsigned end_of_seeds() { return first_seed() + switches(); }
  static unsigned switches() { return drawn_switches(kFewSwitches, kAllSwitches); }

  void install(const Switch &installed) {
    empty_base_port_cache();
    fake::platform() = {};
    fake::platform().writes_trace = false;
    fake::platform().history_answers = {{100, 1}, {101, 1}};
    fake::platform().interfaces = installed.interfaces;
    entries_.clear();
    for (const fake::Interface &interface : installed.interfaces) {
      if (const auto found = installed.entries.find(interface.port); found != installed.entries.end()) {
        entries_[interface.if_index] = found->second;
      }
    }
    type_ = installed.type;
    fake::platform().answer = [this](const fake::Request &request) { return answer(request); };
  }

  Value get_port(uint16_t port) { return get(GetParam().magic, {port}); }
  Value get_behind(uint16_t port) { return get_next(GetParam().magic, {port}); }

  uint16_t answered_port() const {
    const std::string name = answered();
    return static_cast<uint16_t>(std::stoul(name.substr(name.rfind('.') + 1)));
  }

 private:
  // The spanning-tree process: entries of this column's command by this column's key.
  fake::Send answer(const fake::Request &request) {
    if (request.command == protocol::kGlobalSettings) {
      return {.attributes = fake::Attributes{{protocol::kMode, fake::number(type_)}}};
    }
    const auto key = request.keys.find(GetParam().key);
    if (request.command != GetParam().command || request.action != kGet || key == request.keys.end() ||
        request.keys.size() != 1) {
      ADD_FAILURE() << "command " << request.command << " is asked";
      return no_entry();
    }
    uint32_t if_index = 0;
    std::memcpy(&if_index, key->second.data(), sizeof if_index);
    const auto found = entries_.find(if_index);
    if (found == entries_.end()) {
      return no_entry();
    }
    fake::Attributes attributes{{protocol::kInterface, key->second}};
    for (const auto &[token, value] : found->second) {
      attributes[token] = fake::number(value);
    }
    return {.attributes = attributes};
  }

  uint32_t type_ = 0;
  std::map<uint32_t, Values> entries_;  // by interface
};

TEST_P(BasePortWalk, ServesWhatTheModelSays) {
  size_t served = 0;
  size_t walks_that_end_early = 0;
  for (unsigned seed = first_seed(); seed < end_of_seeds() && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const Switch drawn = Generator(seed).draw();
    const Model model(drawn, GetParam());
    install(drawn);

    std::map<uint16_t, std::string> rows;
    for (Value value = get_next(GetParam().magic, {}); value && rows.size() < drawn.interfaces.size();
         value = get_behind(rows.rbegin()->first)) {
      const uint16_t port = answered_port();
      ASSERT_TRUE(rows.empty() || rows.rbegin()->first < port) << "the walk comes to " << port;
      rows[port] = *value;
    }
    EXPECT_EQ(rows, model.walk());
    served += rows.size();
    walks_that_end_early += rows.size() < model.ports_of_a_walk() ? 1U : 0U;

    for (const fake::Interface &interface : drawn.interfaces) {
      EXPECT_EQ(get_port(interface.port), model.get(interface.port)) << "port " << interface.port;
      EXPECT_EQ(answered_port(), interface.port);
    }
    EXPECT_EQ(get_port(999), std::nullopt) << "no such port";
  }
  EXPECT_GT(served, switches()) << "the switches have too few rows";
  EXPECT_GT(walks_that_end_early, 0U) << "no port is without an entry";
}

TEST_P(BasePortWalk, GetNextFromAnywhere) {
  constexpr std::array<uint16_t, 20> kPositions = {0,    1,    2,    128,  129,   130,  131,
                                                   132,  133,  140,  4094, 4095,  4096, 4097,
                                                   4098, 4099, 8190, 8191, 65534, 65535};
  for (unsigned seed = first_seed(); seed < end_of_seeds() && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const Switch drawn = Generator(seed).draw();
    const Model model(drawn, GetParam());
    install(drawn);
    for (const uint16_t position : kPositions) {
      const auto next = model.after(position);
      const Value expected = next ? model.shown(*next) : std::nullopt;
      EXPECT_EQ(get_behind(position), expected) << "behind " << position;
      EXPECT_EQ(answered_port(), expected ? *next : position);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Columns, BasePortWalk,
    ::testing::Values(
        Column{"loop_guard", get_stpxLoopGuardConfigTable, kLoopGuard, 118, protocol::kInterfaceKey},
        Column{"rstp_setting", get_stpxRSTPPortTable, kRstpSetting, 119, protocol::kInterfaceKey},
        Column{"link_type", get_stpxRSTPPortTable, kLinkType, 105, protocol::kInterfaceKey, true, true},
        Column{"smst_flags", get_stpxSMSTPortTable, kSmstFlags, 111, protocol::kMstInterfaceKey, false, true},
        Column{"admin_mode", get_stpxSMSTPortTable, kAdminMode, 119, protocol::kInterfaceKey, false},
        Column{"status", get_stpxSMSTPortTable, kStatus, 111, protocol::kMstInterfaceKey, false, true}),
    [](const ::testing::TestParamInfo<Column> &column) { return column.param.name; });

}  // namespace
