// Walks of the inconsistency tables over thousands of small random switches, held against a model that knows
// nothing of queries: sets of rows, and which of them comes next.
#include <array>
#include <cstring>
#include <map>
#include <optional>
#include <set>

#include "fake_platform.h"
#include "protocol_numbers.h"
#include "search_test.h"
#include "stpsnmp/lookup_handlers.h"
#include "walk_test.h"

namespace {

constexpr uint32_t kMst = 4;
constexpr uint32_t kRapidPvst = 5;

constexpr uint16_t kLowestPhysical = 129;
constexpr uint16_t kHighestPhysical = 4095;
constexpr uint16_t kLowestChannel = 4097;
constexpr uint16_t kHighestChannel = 8191;

constexpr uint32_t kChannelIndexes = 0x16000000;
constexpr uint32_t kPhysicalIndexes = 0x1A000000;

// Switches to draw, for each table, and each table has its own.
constexpr unsigned kFewSwitches = 80;
constexpr unsigned kAllSwitches = 400;

struct Table {
  const char *name;
  FindVarMethod *handler;
  uint8_t column;
  bool has_tree_zero;  // a GET of tree 0 is sent
  bool exists_in_mst;
};

void PrintTo(const Table &table, std::ostream *out) { *out << table.name; }

bool is_channel(uint16_t port) { return port >= kLowestChannel; }

struct Switch {
  uint32_t type;
  std::vector<fake::Interface> interfaces;
  std::map<Row, uint32_t> rows;  // and their states
};

// A switch in small: what the tests vary is drawn with the seed.
class Generator : public Dice {
 public:
  using Dice::Dice;

  // Interface indexes ascend with the ports of a kind, or not.
  Switch draw(bool has_ordered_indexes) {
    Switch result{below(2) == 0 ? kMst : kRapidPvst, {}, {}};
    add_interfaces(std::array<uint16_t, 8>{129, 130, 131, 132, 135, 140, 4094, 4095}, 26, kPhysicalIndexes,
                   has_ordered_indexes, &result);
    add_interfaces(std::array<uint16_t, 6>{4097, 4098, 4099, 4102, 8190, 8191}, 22, kChannelIndexes,
                   has_ordered_indexes, &result);
    shuffle(&result.interfaces);
    const bool has_rows_of_other_ports = below(4) == 0;
    std::vector<uint32_t> trees = {0, 1, 2, 3, 7, 4094};
    trees.resize(1 + below(static_cast<uint32_t>(trees.size())));
    for (const uint32_t tree : trees) {
      const uint32_t density = one_of(std::array<uint32_t, 5>{0, 1, 3, 7, 8});
      for (const fake::Interface &interface : result.interfaces) {
        if (below(8) < density && (interface.is_base_port || has_rows_of_other_ports)) {
          // One of the two lowest bits is set: rows without either are another matter.
          result.rows[{tree, interface.port}] = below(1U << 30) << 2 | (1 + below(3));
        }
      }
    }
    return result;
  }

 private:
  template <class Ports>
  void add_interfaces(const Ports &ports, uint8_t type, uint32_t indexes, bool is_ordered, Switch *result) {
    const uint32_t density = below(16) == 0 ? 0 : 1 + below(7);
    std::vector<uint32_t> order;
    for (uint32_t i = 0; i < std::size(ports); ++i) {
      order.push_back(indexes + 1 + i);
    }
    if (!is_ordered) {
      shuffle(&order);
    }
    for (size_t i = 0; i < std::size(ports); ++i) {
      if (below(8) < density) {
        result->interfaces.push_back(
            {.if_index = order[i], .port = ports[i], .type = type, .is_base_port = below(5) != 0});
      }
    }
  }
};

// Which row follows a position. The spanning-tree process lists a tree's port-channels before its physical
// ports; a walk has to serve them the other way round, and looks at bridge ports alone.
class Model {
 public:
  Model(const Switch &modelled, bool has_tree_zero) : has_tree_zero_(has_tree_zero) {
    for (const auto &[row, state] : modelled.rows) {
      rows_.insert(row);
    }
    for (const fake::Interface &interface : modelled.interfaces) {
      if (interface.is_base_port) {
        (is_channel(interface.port) ? channels_ : physical_ports_).insert(interface.port);
      }
    }
  }

  bool can_get(const Row &row) const { return rows_.contains(row) && (row.tree != 0 || has_tree_zero_); }

  std::optional<Row> after(const Row &position) const {
    const auto port = port_above(position.port);
    if (!port) {
      return first_of(tree_above(position.tree));
    }
    const uint32_t tree = position.tree;
    if (can_get({tree, *port})) {
      return Row{tree, *port};
    }
    if (const auto row = lowest(tree, *port + 1U, is_channel(*port) ? kHighestChannel : kHighestPhysical)) {
      return row;
    }
    if (is_channel(*port) && lowest(tree, kLowestPhysical, kHighestPhysical)) {
      return after({tree + 1, kLowestPhysical - 1});
    }
    if (tree_above(tree)) {
      return first_of(tree_above(tree));
    }
    return is_channel(*port) || tree == 0 ? std::nullopt : lowest(tree, kLowestChannel, kHighestChannel);
  }

  // Why rows stay away from a walk.
  enum Reason {
    kTreeZero,        // the tree cannot be asked for exactly, so that only what follows a port is found
    kOtherPort,       // the port is no bridge port: no candidate, found only behind one without a row
    kNoPhysicalPort,  // a tree that begins with a port-channel is entered at the first physical bridge port
    kChannelOfTreeZero,  // channels behind a missing physical port of the last tree: not looked for in tree 0
    kLastTree,           // the last tree is not entered where its rows are port-channels alone
    kMissingPort,        // behind a missing last physical port, the walk goes on with the next tree's rows
    kReasons
  };

  std::optional<Reason> why_unreached(const Row &row) const {
    if (row.tree == 0 && !has_tree_zero_) {
      return kTreeZero;
    }
    if (!channels_.contains(row.port) && !physical_ports_.contains(row.port)) {
      return kOtherPort;
    }
    if (physical_ports_.empty()) {
      return kNoPhysicalPort;
    }
    const bool lacks_last_port = !rows_.contains({row.tree, *physical_ports_.rbegin()});
    if (!is_channel(row.port) || !lacks_last_port) {
      return std::nullopt;
    }
    if (tree_above(row.tree)) {
      return kMissingPort;
    }
    if (row.tree == 0) {
      return kChannelOfTreeZero;
    }
    if (!lowest(row.tree, *physical_ports_.begin(), kHighestPhysical)) {
      return kLastTree;
    }
    return std::nullopt;
  }

 private:
  std::optional<uint16_t> port_above(uint16_t port) const {
    for (const auto &ports : {physical_ports_, channels_}) {
      if (const auto found = ports.upper_bound(port); found != ports.end()) {
        return *found;
      }
    }
    return std::nullopt;
  }

  std::optional<uint32_t> tree_above(uint32_t tree) const {
    const auto found = rows_.lower_bound({tree + 1, 0});
    return found == rows_.end() ? std::nullopt : std::optional(found->tree);
  }

  std::optional<Row> lowest(uint32_t tree, uint32_t from, uint32_t to) const {
    const auto found = rows_.lower_bound({tree, static_cast<uint16_t>(from)});
    return found == rows_.end() || found->tree != tree || found->port > to ? std::nullopt
                                                                           : std::optional(*found);
  }

  // The row with which a tree above the position is entered.
  std::optional<Row> first_of(std::optional<uint32_t> tree) const {
    if (!tree) {
      return std::nullopt;
    }
    const auto channel = lowest(*tree, kLowestChannel, kHighestChannel);
    if (!channel) {
      return lowest(*tree, kLowestPhysical, kHighestPhysical);
    }
    if (physical_ports_.empty()) {
      return std::nullopt;
    }
    if (const auto row = lowest(*tree, *physical_ports_.begin(), kHighestPhysical)) {
      return row;
    }
    return tree_above(*tree) ? channel : std::nullopt;
  }

  bool has_tree_zero_;
  std::set<Row> rows_;
  std::set<uint16_t> physical_ports_;  // bridge ports, as are the next
  std::set<uint16_t> channels_;
};

class IndexWalk : public WalkTest, public ::testing::WithParamInterface<Table> {
 protected:
  IndexWalk() : WalkTest(GetParam().handler, GetParam().column) {}

  static unsigned first_seed() { return GetParam().column * kAllSwitches; }
  static unsigned end_of_seeds() { return first_seed() + switches(); }
  static unsigned switches() { return drawn_switches(kFewSwitches, kAllSwitches); }

  void install(const Switch &installed) {
    install_interfaces(installed.interfaces);
    entries_.clear();
    for (const fake::Interface &interface : installed.interfaces) {
      for (const auto &[row, state] : installed.rows) {
        if (row.port == interface.port) {
          entries_[{row.tree, interface.if_index}] = state;
        }
      }
    }
    type_ = installed.type;
    fake::platform().answer = [this](const fake::Request &request) { return answer(request); };
  }

  // A state as the table shows it.
  static std::string shown(uint32_t state) {
    if (!GetParam().exists_in_mst) {
      return {static_cast<char>((state & 1U) << 7 | (state & 2U) << 5)};
    }
    const fake::Bytes octets = fake::number(state);
    return {octets.begin(), octets.end()};
  }

  static bool serves(const Switch &asked) { return asked.type == kRapidPvst || GetParam().exists_in_mst; }

  // The rows of a walk and their values, as far as the table shows them.
  static std::map<Row, std::string> shown_rows(const Switch &asked) {
    std::map<Row, std::string> rows;
    for (const auto &[row, state] : asked.rows) {
      rows[row] = shown(state);
    }
    return rows;
  }

  // Asks for every row that the switch could have.
  void expect_gets(const Switch &asked, const Model &model) {
    for (const uint32_t tree : {0U, 1U, 2U, 3U, 4U, 7U, 4094U}) {
      for (const fake::Interface &interface : asked.interfaces) {
        const Row row{tree, interface.port};
        const auto value = exact(row);
        if (serves(asked) && model.can_get(row)) {
          EXPECT_EQ(value, shown(asked.rows.at(row))) << row;
          EXPECT_EQ(answered_row(), row);
        } else {
          EXPECT_EQ(value, std::nullopt) << row;
        }
      }
    }
  }

 private:
  // The spanning-tree process: entries by tree and interface index.
  fake::Send answer(const fake::Request &request) {
    if (request.command == protocol::kGlobalSettings) {
      return {.attributes = fake::Attributes{{protocol::kMode, fake::number(type_)}}};
    }
    constexpr size_t kFirstOfRange = 2 * sizeof(uint32_t);
    std::pair<uint32_t, uint32_t> key;
    std::memcpy(&key.first, request.keys.at(protocol::kVlanTreeKey).data() + kFirstOfRange, sizeof key.first);
    std::memcpy(&key.second, request.keys.at(protocol::kInterfaceKey).data(), sizeof key.second);
    const auto found = request.action == kGet ? entries_.find(key) : entries_.upper_bound(key);
    if (found == entries_.end()) {
      return no_entry();
    }
    fake::Send send = entry(found->first.first, found->first.second);
    (*send.attributes)[protocol::kInconsistency] = fake::number(found->second);
    return send;
  }

  uint32_t type_ = 0;
  std::map<std::pair<uint32_t, uint32_t>, uint32_t> entries_;
};

TEST_P(IndexWalk, ServesWhatTheModelSays) {
  size_t served = 0;
  std::array<size_t, Model::kReasons> unreached{};
  for (unsigned seed = first_seed(); seed < end_of_seeds() && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const Switch drawn = Generator(seed).draw(true);
    const Model model(drawn, GetParam().has_tree_zero);
    install(drawn);
    std::set<Row> expected;
    if (serves(drawn)) {
      for (auto row = model.after({0, 0}); row; row = model.after(*row)) {
        ASSERT_TRUE(expected.insert(*row).second) << "the model comes to " << *row << " again";
      }
      for (const auto &[row, state] : drawn.rows) {
        if (!expected.contains(row)) {
          const auto reason = model.why_unreached(row);
          ASSERT_TRUE(reason) << "there is no reason to leave out " << row;
          ++unreached.at(*reason);
        }
      }
    }
    EXPECT_EQ(walked(shown_rows(drawn)), expected);
    served += expected.size();
    expect_gets(drawn, model);
  }
  EXPECT_GT(served, switches()) << "the switches have too few rows";
  // Every reason occurs where it can.
  for (const auto reason :
       {Model::kOtherPort, Model::kNoPhysicalPort, Model::kLastTree, Model::kMissingPort}) {
    EXPECT_GT(unreached.at(reason), 0U) << reason;
  }
  EXPECT_EQ(unreached.at(Model::kTreeZero) > 0, !GetParam().has_tree_zero);
  EXPECT_EQ(unreached.at(Model::kChannelOfTreeZero) > 0, GetParam().has_tree_zero);
}

TEST_P(IndexWalk, GetNextFromAnywhere) {
  constexpr int kPositions = 15;
  constexpr std::array<uint32_t, 10> kTrees = {0, 1, 2, 3, 4, 7, 8, 4093, 4094, 4095};
  constexpr std::array<uint16_t, 16> kPorts = {0,    1,    128,  129,  130,  131,  139,  4094,
                                               4095, 4096, 4097, 4098, 8190, 8191, 8192, 65535};
  for (unsigned seed = first_seed(); seed < end_of_seeds() && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Generator generator(seed);
    const Switch drawn = generator.draw(true);
    const Model model(drawn, GetParam().has_tree_zero);
    install(drawn);
    for (int i = 0; i < kPositions; ++i) {
      const Row position{generator.one_of(kTrees), generator.one_of(kPorts)};
      const auto expected = serves(drawn) ? model.after(position) : std::nullopt;
      const auto served = next({position.tree, position.port});
      ASSERT_EQ(served.has_value(), expected.has_value()) << "behind " << position;
      if (served) {
        EXPECT_EQ(served->row, *expected) << "behind " << position;
      }
    }
  }
}

// Where interface indexes do not ascend with the ports, rows may stay away; a walk holds its promises all the
// same.
TEST_P(IndexWalk, AscendsAndEndsWhateverTheInterfaceIndexes) {
  for (unsigned seed = first_seed(); seed < end_of_seeds() && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const Switch drawn = Generator(seed).draw(false);
    install(drawn);
    const std::set<Row> rows = walked(shown_rows(drawn));
    if (!serves(drawn)) {
      EXPECT_TRUE(rows.empty());
    }
    expect_gets(drawn, Model(drawn, GetParam().has_tree_zero));
  }
}

INSTANTIATE_TEST_SUITE_P(Tables, IndexWalk,
                         ::testing::Values(Table{"loop", get_stpxLoopInconsistencyTable, 52, true, true},
                                           Table{"root", get_stpxRootInconsistencyTable, 70, true, true},
                                           Table{"inconsistency", get_stpxInconsistencyTable, 120, false,
                                                 false}),
                         [](const ::testing::TestParamInfo<Table> &table) { return table.param.name; });

}  // namespace
