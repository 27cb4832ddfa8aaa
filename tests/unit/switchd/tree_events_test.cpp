// What happens to trees when the state of the switch changes.
#include "model/tree_events.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "keys/keys.h"
#include "model/switch.h"
#include "model/tree_values.h"
#include "model/vlan_set.h"
#include "sources/scenario/consistency.h"
#include "sources/scenario/loader.h"

using namespace stpswitch;
using testing::ElementsAre;
using testing::IsEmpty;

namespace stpswitch {

void PrintTo(const TreeEvent &event, std::ostream *out) {
  *out << "kind " << static_cast<int>(event.kind) << ": tree " << event.tree << ", port " << event.port
       << ", interface " << event.if_mib_index << ", mode "
       << (event.mode ? static_cast<uint32_t>(*event.mode) : 0);
}

}  // namespace stpswitch

namespace {

constexpr char kScenario[] = R"(
switch.mode = "rapid-pvst"
[bridge]
root = "1000.00005e0053aa"
[[port]]
number = 1
vlans = "1,10-12"
root_port_of = "1,10-12"
if_mib_index = 101
[[port]]
number = 2
vlans = "1,10-12"
alternate_port_of = "1,10-12"
if_mib_index = 102
[[port]]
number = 3
vlans = "10"
edge = true
)";

constexpr TreeEvent kTrees{TreeEventKind::kTrees, 0, 0, 0, std::nullopt};

TreeEvent new_root(uint32_t tree, SpanningTreeMode mode = SpanningTreeMode::kRapidPvst) {
  return {TreeEventKind::kNewRoot, tree, 0, 0, mode};
}

TreeEvent change(uint32_t tree, uint32_t port, uint32_t if_mib_index) {
  return {TreeEventKind::kTopologyChange, tree, port, if_mib_index, SpanningTreeMode::kRapidPvst};
}

class TreeEvents : public testing::Test {
 protected:
  TreeEvents() {
    switch_.on_tree_events([this](const std::vector<TreeEvent> &events) { calls_.push_back(events); });
  }

  // Changes keys at once, and returns the events that come of it.
  std::vector<TreeEvent> set(const std::vector<std::pair<std::string, std::string>> &keys) {
    SwitchState state = switch_.state();
    for (const auto &[key, text] : keys) {
      state = with_value(state, key, text);
    }
    return replace(std::move(state));
  }
  std::vector<TreeEvent> set(const std::string &key, const std::string &text) { return set({{key, text}}); }

  std::vector<TreeEvent> replace(SwitchState state) {
    calls_.clear();
    switch_.replace(std::move(state));
    EXPECT_LE(calls_.size(), 1U);
    return calls_.empty() ? std::vector<TreeEvent>() : calls_.front();
  }

  uint32_t changes_of(uint32_t tree) const { return switch_.topology().of(tree).count; }

  Switch switch_{parse_scenario(kScenario, "test.toml")};
  std::vector<std::vector<TreeEvent>> calls_;
};

TEST_F(TreeEvents, TellOfAPortThatBeginsToForward) {
  EXPECT_THAT(set({{"port.1.root_port_of", "1,11-12"},
                   {"port.1.alternate_port_of", "10"},
                   {"port.2.alternate_port_of", "1,11-12"},
                   {"port.2.root_port_of", "10"}}),
              ElementsAre(change(10, 129, 101)))
      << "one event of a tree, by the first of its ports";
  EXPECT_THAT(set("port.2.blocking_in", "10"), ElementsAre(change(10, 130, 102)));
  EXPECT_THAT(set({{"port.2.blocking_in", ""}, {"port.2.learning_in", "10"}}), IsEmpty());
  EXPECT_THAT(set("port.2.learning_in", ""), ElementsAre(change(10, 130, 102)));
  EXPECT_EQ(changes_of(10), 3U);
  EXPECT_EQ(changes_of(11), 0U);
}

TEST_F(TreeEvents, TellOfEachTree) {
  EXPECT_THAT(
      set({{"port.1.link", "down"}, {"port.2.alternate_port_of", ""}, {"port.2.root_port_of", "1,10-12"}}),
      ElementsAre(change(1, 130, 102), change(10, 130, 102), change(11, 130, 102), change(12, 130, 102)));
}

TEST_F(TreeEvents, DoNotTellOfAPortThatLosesItsLink) {
  EXPECT_THAT(set("port.2.link", "down"), IsEmpty());
  EXPECT_EQ(changes_of(10), 0U);
}

TEST_F(TreeEvents, TellOfAPortThatComesToForwardWithItsLink) {
  set({{"port.2.link", "down"}, {"port.2.alternate_port_of", ""}});
  EXPECT_THAT(set("port.2.link", "up"), ElementsAre(change(1, 130, 102), change(10, 130, 102),
                                                    change(11, 130, 102), change(12, 130, 102)));
}

TEST_F(TreeEvents, DoNotTellOfPortsAtTheEdge) {
  EXPECT_THAT(set("port.3.blocking_in", "10"), IsEmpty());
  EXPECT_THAT(set("port.3.blocking_in", ""), IsEmpty());
  set("port.3.edge", "false");
  EXPECT_THAT(set("port.3.blocking_in", "10"), ElementsAre(change(10, 131, 131)));
}

TEST_F(TreeEvents, TellOfAPortThatAnInconsistencyBlocks) {
  set("port.3.edge", "false");
  EXPECT_THAT(set("port.3.loop_inconsistent", "10"), ElementsAre(change(10, 131, 131)));
  EXPECT_THAT(set("port.3.loop_inconsistent", ""), ElementsAre(change(10, 131, 131)));
}

TEST_F(TreeEvents, TellOfANewRootAndOfNothingElseInItsTree) {
  EXPECT_THAT(set({{"port.1.root_port_of", "1,11-12"}, {"port.2.alternate_port_of", "1,11-12"}}),
              ElementsAre(new_root(10)));
  EXPECT_EQ(changes_of(10), 1U) << "a port forwards that did not";
  EXPECT_THAT(set("port.1.root_port_of", "1,10-12"), IsEmpty()) << "another root is nobody's new root";
}

TEST_F(TreeEvents, TellOfANewRootWhereTheOldOneIsGone) {
  EXPECT_THAT(set({{"port.1.link", "down"}, {"port.2.link", "down"}}),
              ElementsAre(new_root(1), new_root(10), new_root(11), new_root(12)));
}

TEST_F(TreeEvents, TellOfANewRootWhereTheRootPortHasLeftTheTree) {
  EXPECT_THAT(set("port.1.vlans", "1,11-12"), ElementsAre(new_root(10)));
  EXPECT_THAT(set("port.1.vlans", "1,10-12"), IsEmpty());
}

TEST_F(TreeEvents, DoNotTellOfARootThatWasOneAllTheTime) {
  set({{"port.1.root_port_of", ""}, {"port.2.alternate_port_of", ""}});
  EXPECT_THAT(set("bridge.priority", "4096"), IsEmpty());
  EXPECT_THAT(set("bridge.address", "00:00:5e:00:53:99"), IsEmpty());
}

TEST_F(TreeEvents, TellThatTreesComeAndGo) {
  EXPECT_THAT(set("rapid_pvst.disabled_vlans", "11"), ElementsAre(kTrees));
  EXPECT_THAT(set("rapid_pvst.disabled_vlans", ""), ElementsAre(kTrees))
      << "and nothing of the tree that is new";
  EXPECT_THAT(set("port.3.vlans", "10,20"), ElementsAre(kTrees));
  EXPECT_THAT(set("switch.mode", "mst"), ElementsAre(kTrees));
  SwitchState state = switch_.state();
  state.settings.mode = std::nullopt;
  EXPECT_THAT(replace(state), ElementsAre(kTrees));
  EXPECT_THAT(replace(state), IsEmpty());
}

TEST_F(TreeEvents, TellNothingOfAnotherModesTrees) {
  SwitchState state = switch_.state();
  state.mst_instances[10].vlans = parse_vlans("10");
  replace(state);
  EXPECT_THAT(set({{"switch.mode", "mst"}, {"port.1.root_port_of", ""}}), ElementsAre(kTrees));
}

TEST_F(TreeEvents, TellNothingOfWhatIsNotKnown) {
  SwitchState state = switch_.state();
  state.ports.at(2).role = {};
  replace(state);
  state.ports.at(2).role.elsewhere = PortRole::kDesignated;
  EXPECT_THAT(replace(state), IsEmpty());
}

TEST_F(TreeEvents, TellOfANewRootWhereThePortsRoleWasNotKnown) {
  SwitchState state = switch_.state();
  state.ports.at(1).role = {};
  EXPECT_THAT(replace(state), IsEmpty());
  state.ports.at(1).role.elsewhere = PortRole::kDesignated;
  EXPECT_THAT(replace(state), ElementsAre(new_root(1), new_root(10), new_root(11), new_root(12)));
}

// Where a tree's root is, from all of its ports.
ObservedTree observed_in(const Switch &the_switch, uint32_t tree) {
  RootSearch root;
  for (const auto &[if_index, port] : the_switch.bridge_ports()) {
    if (the_switch.tree_ports().contains({tree, if_index})) {
      root.add(role_in(tree, port), port);
    }
  }
  return tree_values(the_switch.state(), root, tree).observed;
}

// Only ports that tell of a root are looked at for it: that must miss none.
TEST_F(TreeEvents, TellOfTheNewRootsThatALookAtAllPortsTells) {
  constexpr std::array<const char *, 5> kSets{"", "10", "1,11", "10-12", "1,10-12"};
  constexpr std::array<std::optional<PortRole>, 4> kRoles{std::nullopt, PortRole::kRoot,
                                                          PortRole::kDesignated, PortRole::kAlternate};
  std::mt19937 random(16);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same changes each time
  const auto one_of = [&random](const auto &choices) { return choices[random() % choices.size()]; };
  size_t new_roots = 0;
  for (int i = 0; i < 2000; ++i) {
    SwitchState state = switch_.state();
    Port &port = state.ports.at(one_of(std::array{1U, 2U, 3U}));
    switch (random() % 4) {
      case 0:
        port.vlans = parse_vlans(one_of(kSets));
        break;
      case 1:
        port.link_up = random() % 2 == 0;
        break;
      default:
        port.role = {};
        port.role.elsewhere = one_of(kRoles);
        if (const auto exception = one_of(kRoles)) {
          port.role.exceptions[*exception] = parse_vlans(one_of(kSets));
        }
    }
    const Switch before(switch_.state());
    const std::vector<TreeEvent> events = replace(std::move(state));
    TreeSet trees = before.running_trees();
    trees.intersect(switch_.running_trees());
    std::vector<uint32_t> expected;
    trees.for_each([&](uint32_t tree) {
      const ObservedTree then = observed_in(before, tree);
      const ObservedTree now = observed_in(switch_, tree);
      if (now.root_port == 0U && then.root_id != then.bridge_id) {
        expected.push_back(tree);
      }
    });
    std::vector<uint32_t> told;
    for (const TreeEvent &event : events) {
      if (event.kind == TreeEventKind::kNewRoot) {
        told.push_back(event.tree);
      }
    }
    ASSERT_EQ(told, expected) << "change " << i;
    new_roots += told.size();
  }
  EXPECT_GT(new_roots, 0U);
}

TEST_F(TreeEvents, AreCountedAnewForATreeThatComesBack) {
  set({{"port.2.alternate_port_of", "1,10-11"}, {"port.2.root_port_of", "12"}});
  EXPECT_EQ(changes_of(12), 1U);
  EXPECT_GE(switch_.topology().of(12).last, switch_.topology().of(11).last);
  set("rapid_pvst.disabled_vlans", "12");
  set("rapid_pvst.disabled_vlans", "");
  EXPECT_EQ(changes_of(12), 0U);
}

TEST_F(TreeEvents, AreCountedAnewForAnotherModesTrees) {
  SwitchState state = switch_.state();
  state.mst_instances[12].vlans = parse_vlans("12");
  replace(state);
  set({{"port.2.alternate_port_of", "1,10-11"}, {"port.2.root_port_of", "12"}});
  EXPECT_EQ(changes_of(12), 1U);
  set("switch.mode", "mst");
  ASSERT_TRUE(switch_.running_trees().contains(12));
  EXPECT_EQ(changes_of(12), 0U);
}

}  // namespace
