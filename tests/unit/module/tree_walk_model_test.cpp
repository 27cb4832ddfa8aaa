// Walks from tree to tree over small random switches, held against a model that knows nothing of queries:
// which ports a walk accepts in each tree, which rows the spanning-tree process has, and which of them comes
// next.
#include <array>
#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "protocol_numbers.h"
#include "search_test.h"
#include "stpsnmp/lookup_handlers.h"
#include "tree_walk_test.h"
#include "walk_test.h"

namespace {

constexpr uint32_t kMst = 4;
constexpr uint32_t kRapidPvst = 5;

constexpr uint8_t kDown = 2;

// Switches to draw, for each table and mode, and each has its own.
constexpr unsigned kFewSwitches = 20;
constexpr unsigned kAllSwitches = 60;

struct Table {
  const char *name;
  FindVarMethod *handler;
  uint8_t column;
  uint32_t type;
  std::vector<uint32_t> possible_trees;  // in this mode
};

void PrintTo(const Table &table, std::ostream *out) { *out << table.name; }

// What the spanning-tree process tells of a port in a tree.
struct Entry {
  uint32_t role;
  uint32_t edge;
  uint32_t peer;
};

struct Switch {
  std::vector<fake::Interface> interfaces;
  std::set<uint32_t> trees;                         // that run
  std::map<uint16_t, std::vector<uint32_t>> vlans;  // of the MST instances whose context is known
  std::map<Row, Entry> rows;
};

constexpr uint32_t kInterfaceIndexes = 0x1A000000;
constexpr uint16_t kLowestChannel = 4097;
constexpr std::array<uint16_t, 8> kPortNumbers = {129, 130, 135, 4094, 4095, kLowestChannel, 4102, 8191};

constexpr std::array<uint32_t, 7> kVlans = {1, 2, 3, 10, 11, 2000, 4094};

// A switch in small: what the tests vary is drawn with the seed.
class Generator : public Dice {
 public:
  using Dice::Dice;

  Switch draw(const Table &table) {
    Switch result;
    add_interfaces(&result);
    const uint32_t trees = 1 + below(8);
    for (const uint32_t tree : table.possible_trees) {
      if (below(8) < trees) {
        result.trees.insert(tree);
      }
    }
    if (table.type == kMst) {
      map_vlans(&result);
    }
    // Rows that the process lacks: none, some, or many.
    const uint32_t gaps = one_of(std::array<uint32_t, 5>{0, 0, 0, 1, 12});
    const bool has_rows_of_other_ports = below(4) == 0;
    for (const uint32_t tree : result.trees) {
      const bool is_empty = below(10) == 0;
      for (const fake::Interface &interface : result.interfaces) {
        const bool can_have_row = interface.is_base_port || has_rows_of_other_ports;
        if (can_have_row && !is_empty && below(32) >= gaps) {
          result.rows[{tree, interface.port}] = {below(6), below(3), below(3)};
        }
      }
    }
    return result;
  }

 private:
  // Interface indexes do not ascend with the ports. Few ports are members of few VLANs on some switches.
  void add_interfaces(Switch *result) {
    std::vector<uint32_t> indexes = {1, 2, 3, 4, 5, 6, 7, 8};
    shuffle(&indexes);
    const uint32_t density = 1 + below(8);
    const uint32_t membership = one_of(std::array<uint32_t, 4>{1, 4, 6, 8});
    for (const uint16_t port : kPortNumbers) {
      fake::Interface interface {};
      interface.if_index = kInterfaceIndexes + indexes.back();
      interface.port = port;
      indexes.pop_back();
      interface.type = port < kLowestChannel ? 26 : 22;
      interface.is_base_port = below(8) != 0;
      interface.oper_status = below(6) == 0 ? kDown : 1;
      for (const uint32_t vlan : kVlans) {
        if (below(8) < membership) {
          interface.vlans.push_back(vlan);
        }
      }
      if (below(8) < density) {
        result->interfaces.push_back(interface);
      }
    }
    shuffle(&result->interfaces);
  }

  // Each VLAN belongs to one instance that runs; some have none, and some contexts are not known.
  void map_vlans(Switch *result) {
    const std::vector<uint32_t> trees(result->trees.begin(), result->trees.end());
    for (const uint32_t tree : trees) {
      result->vlans[static_cast<uint16_t>(tree)] = {};
    }
    for (const uint32_t vlan : kVlans) {
      if (!trees.empty()) {
        result->vlans[static_cast<uint16_t>(one_of(trees))].push_back(vlan);
      }
    }
    if (!trees.empty() && below(16) == 0) {
      result->vlans.erase(static_cast<uint16_t>(one_of(trees)));
    }
  }
};

// Which row follows a position. A walk goes from tree to tree as the process has rows in them, and in a tree
// through the ports that are members of its VLANs and have a link. It ends at a port without a row, and at a
// tree without such a port where that one follows another.
class Model {
 public:
  Model(const Switch &modelled, uint32_t type) : switch_(modelled), type_(type) {
    for (const auto &[row, entry] : modelled.rows) {
      trees_.insert(row.tree);
    }
  }

  bool can_get(const Row &row) const { return switch_.rows.contains(row); }

  std::optional<Row> after(const Row &position) const {
    const uint32_t asked = position.tree == 0 ? first_tree() : position.tree;
    std::optional<uint32_t> tree = start_of(asked);
    std::optional<uint16_t> port;
    if (tree) {
      port = port_above(*tree, position.port);
    } else if (tree = tree_above(asked); tree) {
      port = port_above(*tree, 0);
    }
    if (tree && !port) {
      tree = tree_above(*tree);
      port = tree ? port_above(*tree, 0) : std::nullopt;
    }
    if (!port || !can_get({*tree, *port})) {
      return std::nullopt;
    }
    return Row{*tree, *port};
  }

  // Why rows stay away from a walk.
  enum Reason {
    kNoBasePort,    // the port is a member of a port-channel, or routed
    kWithoutLink,   // the port is down
    kOtherVlans,    // the port is no member of the tree's VLANs
    kMissingEntry,  // the walk has ended at a port without a row
    kEmptyTree,     // the walk has ended at a tree without a port that it accepts
    kReasons
  };

  std::optional<Reason> why_unreached(const Row &row) const {
    const fake::Interface &interface = *find_port(row.port);
    if (!interface.is_base_port) {
      return kNoBasePort;
    }
    if (interface.oper_status == kDown) {
      return kWithoutLink;
    }
    if (!is_member(interface, row.tree)) {
      return kOtherVlans;
    }
    const auto end = end_of_walk();
    return end && !(row < end->first) ? std::optional(end->second) : std::nullopt;
  }

 private:
  uint32_t first_tree() const { return type_ == kRapidPvst ? 1 : 0; }

  std::vector<fake::Interface>::const_iterator find_port(uint16_t port) const {
    return std::find_if(switch_.interfaces.begin(), switch_.interfaces.end(),
                        [port](const fake::Interface &interface) { return interface.port == port; });
  }

  bool is_member(const fake::Interface &interface, uint32_t tree) const {
    std::set<uint32_t> vlans = {tree};
    if (type_ == kMst) {
      const auto instance = switch_.vlans.find(static_cast<uint16_t>(tree));
      vlans = instance == switch_.vlans.end()
                  ? std::set<uint32_t>()
                  : std::set<uint32_t>(instance->second.begin(), instance->second.end());
    }
    return std::any_of(interface.vlans.begin(), interface.vlans.end(),
                       [&vlans](uint32_t vlan) { return vlans.contains(vlan); });
  }

  std::set<uint16_t> accepted(uint32_t tree) const {
    std::set<uint16_t> ports;
    for (const fake::Interface &interface : switch_.interfaces) {
      if (interface.is_base_port && interface.oper_status != kDown && is_member(interface, tree)) {
        ports.insert(interface.port);
      }
    }
    return ports;
  }

  std::optional<uint16_t> port_above(uint32_t tree, uint16_t port) const {
    const std::set<uint16_t> ports = accepted(tree);
    const auto found = ports.upper_bound(port);
    return found == ports.end() ? std::nullopt : std::optional(*found);
  }

  std::optional<uint32_t> tree_above(uint32_t tree) const {
    const auto found = trees_.upper_bound(tree);
    return found == trees_.end() ? std::nullopt : std::optional(*found);
  }

  // The tree in which a request that names one starts, if that runs. Where it has no row, a walk through
  // VLANs is taken on to the next one that has; one through MST instances stays, as long as anything follows
  // at all.
  std::optional<uint32_t> start_of(uint32_t tree) const {
    const auto found = trees_.lower_bound(tree);
    if (!switch_.trees.contains(tree) || found == trees_.end()) {
      return std::nullopt;
    }
    return type_ == kMst ? tree : *found;
  }

  // Where a walk from the bare column ends before its time.
  std::optional<std::pair<Row, Reason>> end_of_walk() const {
    std::set<uint32_t> trees = trees_;
    if (type_ == kMst && switch_.trees.contains(0)) {
      trees.insert(0);
    }
    for (const uint32_t tree : trees) {
      const std::set<uint16_t> ports = accepted(tree);
      if (ports.empty() && tree != *trees.begin()) {
        return std::pair(Row{tree, 0}, kEmptyTree);
      }
      for (const uint16_t port : ports) {
        if (!can_get({tree, port})) {
          return std::pair(Row{tree, port}, kMissingEntry);
        }
      }
    }
    return std::nullopt;
  }

  const Switch &switch_;
  uint32_t type_;
  std::set<uint32_t> trees_;  // that have rows
};

class TreeWalk : public WalkTest, public ::testing::WithParamInterface<Table> {
 protected:
  TreeWalk() : WalkTest(GetParam().handler, GetParam().column) {}

  static unsigned first_seed() { return (GetParam().column + GetParam().type) * kAllSwitches; }
  static unsigned end_of_seeds() { return first_seed() + switches(); }
  static unsigned switches() { return drawn_switches(kFewSwitches, kAllSwitches); }

  void install(const Switch &installed) {
    install_interfaces(installed.interfaces);
    fake::platform().mst_contexts = installed.vlans;
    trees_ = installed.trees;
    entries_.clear();
    for (const fake::Interface &interface : installed.interfaces) {
      for (const auto &[row, entry] : installed.rows) {
        if (row.port == interface.port) {
          entries_[{row.tree, interface.if_index}] = entry;
        }
      }
    }
    fake::platform().answer = [this](const fake::Request &request) { return answer(request); };
  }

  static bool serves_flags() { return GetParam().handler == get_stpxRPVSTPortTable; }

  // Whether the table has rows in this mode.
  static bool is_served() { return !serves_flags() || GetParam().type == kRapidPvst; }

  // An entry as the table shows it.
  static std::string shown_value(const Entry &entry) {
    if (serves_flags()) {
      return {static_cast<char>((entry.edge != 0 ? 0x80 : 0) | (entry.peer == 1 ? 0x10 : 0))};
    }
    const fake::Bytes octets = fake::number(entry.role);
    return {octets.begin(), octets.end()};
  }

  static std::map<Row, std::string> shown_rows(const Switch &asked) {
    std::map<Row, std::string> rows;
    for (const auto &[row, entry] : asked.rows) {
      rows[row] = shown_value(entry);
    }
    return rows;
  }

  // Asks for every row that the switch could have.
  void expect_gets(const Switch &asked, const Model &model) {
    std::set<uint32_t> trees = asked.trees;
    trees.insert({0, 1, 4, 4095});
    for (const uint32_t tree : trees) {
      for (const fake::Interface &interface : asked.interfaces) {
        const Row row{tree, interface.port};
        const auto value = exact(row);
        if (is_served() && model.can_get(row)) {
          EXPECT_EQ(value, shown_value(asked.rows.at(row))) << row;
          EXPECT_EQ(answered_row(), row);
        } else {
          EXPECT_EQ(value, std::nullopt) << row;
        }
      }
    }
  }

 private:
  // The spanning-tree process: entries by tree and interface index.
  fake::Send answer(const fake::Request &request) const {
    if (request.command == protocol::kGlobalSettings) {
      return {.attributes = fake::Attributes{{protocol::kMode, fake::number(GetParam().type)}}};
    }
    if (request.command != (GetParam().type == kMst ? protocol::kMstPorts : protocol::kRapidPvstPorts)) {
      return no_entry();
    }
    constexpr size_t kFirstOfRange = 2 * sizeof(uint32_t);
    const bool is_mst = request.command == protocol::kMstPorts;
    std::pair<uint32_t, uint32_t> key;
    std::memcpy(
        &key.first,
        request.keys.at(is_mst ? protocol::kMstTreeKey : protocol::kVlanTreeKey).data() + kFirstOfRange,
        sizeof key.first);
    std::memcpy(&key.second,
                request.keys.at(is_mst ? protocol::kMstInterfaceKey : protocol::kInterfaceKey).data(),
                sizeof key.second);
    if (request.action == kGetNext && key.second == 0 && !trees_.contains(key.first)) {
      return no_entry();
    }
    const auto found = request.action == kGet ? entries_.find(key) : entries_.upper_bound(key);
    if (found == entries_.end()) {
      return no_entry();
    }
    fake::Send send = entry(found->first.first, found->first.second);
    const auto &[role, edge, peer] = found->second;
    send.attributes->insert({{protocol::kPortRole, fake::number(role)},
                             {protocol::kEdge, fake::number(edge)},
                             {protocol::kPeer, fake::number(peer)}});
    return send;
  }

  std::set<uint32_t> trees_;
  std::map<std::pair<uint32_t, uint32_t>, Entry> entries_;
};

TEST_P(TreeWalk, ServesWhatTheModelSays) {
  size_t served = 0;
  std::array<size_t, Model::kReasons> unreached{};
  for (unsigned seed = first_seed(); seed < end_of_seeds() && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const Switch drawn = Generator(seed).draw(GetParam());
    const Model model(drawn, GetParam().type);
    install(drawn);
    std::set<Row> expected;
    if (is_served()) {
      for (auto row = model.after({0, 0}); row; row = model.after(*row)) {
        ASSERT_TRUE(expected.insert(*row).second) << "the model comes to " << *row << " again";
      }
      for (const auto &[row, entry] : drawn.rows) {
        const auto reason = model.why_unreached(row);
        EXPECT_NE(reason.has_value(), expected.contains(row)) << row;
        if (reason) {
          ++unreached.at(*reason);
        }
      }
    }
    EXPECT_EQ(walked(shown_rows(drawn)), expected);
    served += expected.size();
    expect_gets(drawn, model);
  }
  if (!is_served()) {
    return;
  }
  EXPECT_GT(served, 3 * switches()) << "the switches have too few rows";
  for (size_t reason = 0; reason < unreached.size(); ++reason) {
    EXPECT_GT(unreached.at(reason), 0U) << reason;
  }
}

TEST_P(TreeWalk, GetNextFromAnywhere) {
  constexpr int kPositions = 15;
  constexpr std::array<uint32_t, 16> kTrees = {0,    1,    2,    3,    4,    10,   11,    2000,
                                               2001, 4093, 4094, 4095, 4096, 4097, 65538, 0xFFFFFFFF};
  constexpr std::array<uint16_t, 14> kPorts = {0,    1,    128,  129,  130,  134,  135,
                                               4095, 4096, 4097, 4101, 8190, 8191, 65535};
  for (unsigned seed = first_seed(); seed < end_of_seeds() && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Generator generator(seed);
    const Switch drawn = generator.draw(GetParam());
    const Model model(drawn, GetParam().type);
    install(drawn);
    for (int i = 0; i < kPositions; ++i) {
      const Row position{generator.one_of(kTrees), generator.one_of(kPorts)};
      const auto expected = is_served() ? model.after(position) : std::nullopt;
      const auto served = next({position.tree, position.port});
      ASSERT_EQ(served.has_value(), expected.has_value()) << "behind " << position;
      if (served) {
        EXPECT_EQ(served->row, *expected) << "behind " << position;
        EXPECT_EQ(served->value, shown_value(drawn.rows.at(served->row))) << "behind " << position;
      }
    }
  }
}

const std::vector<uint32_t> kVlanTrees = {1,  2,  3,    10,
                                          11, 12, 2000, 4094};  // of VLAN 12, no port is a member
const std::vector<uint32_t> kInstances = {0, 1, 2, 3, 11, 4094};

INSTANTIATE_TEST_SUITE_P(
    Tables, TreeWalk,
    ::testing::Values(Table{"flags", get_stpxRPVSTPortTable, 109, kRapidPvst, kVlanTrees},
                      Table{"flagsInMst", get_stpxRPVSTPortTable, 109, kMst, kInstances},
                      Table{"role", get_stpxRSTPPortRoleTable, 60, kRapidPvst, kVlanTrees},
                      Table{"roleInMst", get_stpxRSTPPortRoleTable, 60, kMst, kInstances}),
    [](const ::testing::TestParamInfo<Table> &table) { return table.param.name; });

}  // namespace
