// The events of inconsistencies that appear, change and vanish.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "keys/keys.h"
#include "model/switch.h"
#include "sources/scenario/consistency.h"
#include "sources/scenario/loader.h"

using namespace stpswitch;
using testing::ElementsAre;

namespace {

constexpr char kScenario[] = R"(
[switch]
mode = "rapid-pvst"
[[mst.instance]]
id = 10
vlans = "20"
[[port]]
number = 1
vlans = "1,10,20"
[[port]]
number = 2
vlans = "10"
[[port]]
number = 7
channel = 2
[[port_channel]]
number = 2
vlans = "1,10"
)";

constexpr uint32_t kPort = 0x1A000000;
constexpr uint32_t kChannel = 0x16000000;
constexpr InconsistencyEventKind kPvidAndType = InconsistencyEventKind::kPvidAndType;
constexpr InconsistencyEventKind kLoop = InconsistencyEventKind::kLoop;
constexpr InconsistencyEventKind kRoot = InconsistencyEventKind::kRoot;
constexpr SpanningTreeMode kMst = SpanningTreeMode::kMst;
constexpr SpanningTreeMode kRapidPvst = SpanningTreeMode::kRapidPvst;

class InconsistencyEvents : public testing::Test {
 protected:
  InconsistencyEvents() {
    switch_.on_inconsistencies(
        [this](const std::vector<InconsistencyEvent> &events) { calls_.push_back(events); });
  }

  // Changes keys at once, and returns the events that come of it.
  std::vector<InconsistencyEvent> set(const std::vector<std::pair<std::string, std::string>> &keys) {
    SwitchState state = switch_.state();
    for (const auto &[key, text] : keys) {
      state = with_value(state, key, text);
    }
    return replace(std::move(state));
  }
  std::vector<InconsistencyEvent> set(const std::string &key, const std::string &text) {
    return set({{key, text}});
  }

  std::vector<InconsistencyEvent> replace(SwitchState state) {
    calls_.clear();
    switch_.replace(std::move(state));
    EXPECT_LE(calls_.size(), 1U);
    if (calls_.empty()) {
      return {};
    }
    EXPECT_FALSE(calls_.front().empty()) << "a call without events";
    return calls_.front();
  }

  Switch switch_{parse_scenario(kScenario, "test.toml")};
  std::vector<std::vector<InconsistencyEvent>> calls_;
};

// What a failing test shows.
void show(const InconsistencyEvent &event, std::ostream *out) {
  *out << "kind " << static_cast<int>(event.kind) << ": tree " << event.tree << ", interface " << std::hex
       << event.if_index << ", state " << event.state << std::dec << ", mode "
       << static_cast<uint32_t>(event.mode);
}

}  // namespace

namespace stpswitch {

void PrintTo(const InconsistencyEvent &event, std::ostream *out) { show(event, out); }

}  // namespace stpswitch

namespace {

using Event = InconsistencyEvent;

TEST_F(InconsistencyEvents, TellThatARootInconsistencyAppearsAndVanishes) {
  EXPECT_THAT(set("port.1.root_inconsistent", "10"), ElementsAre(Event{kRoot, 10, kPort + 1, 1, kRapidPvst}));
  EXPECT_THAT(set("port.1.root_inconsistent", ""), ElementsAre(Event{kRoot, 10, kPort + 1, 0, kRapidPvst}));
}

TEST_F(InconsistencyEvents, TellThatALoopInconsistencyAppearsAndVanishes) {
  EXPECT_THAT(set("port_channel.2.loop_inconsistent", "1"),
              ElementsAre(Event{kLoop, 1, kChannel + 2, 1, kRapidPvst}));
  EXPECT_THAT(set("port_channel.2.loop_inconsistent", ""),
              ElementsAre(Event{kLoop, 1, kChannel + 2, 0, kRapidPvst}));
}

TEST_F(InconsistencyEvents, TellWhichOfPortVlanIdentifierAndTypeAreLeft) {
  EXPECT_THAT(set("port.1.pvid_inconsistent", "10"),
              ElementsAre(Event{kPvidAndType, 10, kPort + 1, 1, kRapidPvst}));
  EXPECT_THAT(set("port.1.type_inconsistent", "10"),
              ElementsAre(Event{kPvidAndType, 10, kPort + 1, 3, kRapidPvst}));
  EXPECT_THAT(set("port.1.pvid_inconsistent", ""),
              ElementsAre(Event{kPvidAndType, 10, kPort + 1, 2, kRapidPvst}));
  EXPECT_THAT(set("port.1.type_inconsistent", ""),
              ElementsAre(Event{kPvidAndType, 10, kPort + 1, 0, kRapidPvst}));
}

TEST_F(InconsistencyEvents, TellWhatBecameOfEachTree) {
  set("port.1.root_inconsistent", "1,10");
  EXPECT_THAT(
      set("port.1.root_inconsistent", "10,20"),
      ElementsAre(Event{kRoot, 1, kPort + 1, 0, kRapidPvst}, Event{kRoot, 20, kPort + 1, 1, kRapidPvst}));
}

TEST_F(InconsistencyEvents, OneBitForAnotherIsOneEvent) {
  set("port.1.pvid_inconsistent", "10");
  EXPECT_THAT(set({{"port.1.pvid_inconsistent", ""}, {"port.1.type_inconsistent", "10"}}),
              ElementsAre(Event{kPvidAndType, 10, kPort + 1, 2, kRapidPvst}));
}

TEST_F(InconsistencyEvents, OfOneChangeAreOrdered) {
  EXPECT_THAT(
      set({{"port.1.root_inconsistent", "1,10"},
           {"port_channel.2.root_inconsistent", "10"},
           {"port.1.loop_inconsistent", "20"},
           {"port.2.pvid_inconsistent", "10"},
           {"port.1.type_inconsistent", "10,20"}}),
      ElementsAre(Event{kPvidAndType, 10, kPort + 1, 2, kRapidPvst},
                  Event{kPvidAndType, 10, kPort + 2, 1, kRapidPvst},
                  Event{kPvidAndType, 20, kPort + 1, 2, kRapidPvst},
                  Event{kLoop, 20, kPort + 1, 1, kRapidPvst}, Event{kRoot, 1, kPort + 1, 1, kRapidPvst},
                  Event{kRoot, 10, kChannel + 2, 1, kRapidPvst}, Event{kRoot, 10, kPort + 1, 1, kRapidPvst}));
}

TEST_F(InconsistencyEvents, DoNotComeOfWhatIsNoEntry) {
  EXPECT_THAT(set("port.1.root_inconsistent", "0,30,4094"), ElementsAre());
  EXPECT_THAT(set("port.2.loop_inconsistent", "1"), ElementsAre());
  EXPECT_THAT(set("port.7.pvid_inconsistent", "1"), ElementsAre());
}

TEST_F(InconsistencyEvents, DoNotComeOfOtherChanges) {
  set({{"port.1.root_inconsistent", "1"}, {"port_channel.2.loop_inconsistent", "10"}});
  EXPECT_THAT(set("port.1.link", "down"), ElementsAre());
  EXPECT_THAT(set("port.7.link", "down"), ElementsAre());
  EXPECT_THAT(set("port.1.path_cost", "5"), ElementsAre());
  EXPECT_THAT(set("port.1.root_guard", "true"), ElementsAre());
  EXPECT_THAT(set("port.1.root_inconsistent", "1,4094"), ElementsAre());
  EXPECT_THAT(set("switch.name", "renamed"), ElementsAre());
  EXPECT_THAT(replace(switch_.state()), ElementsAre());
}

TEST_F(InconsistencyEvents, ComeOfMembershipOfVlans) {
  set({{"port.1.root_inconsistent", "10,30"}, {"port.1.loop_inconsistent", "1"}});
  EXPECT_THAT(set("port.1.vlans", "1,30"), ElementsAre(Event{kRoot, 10, kPort + 1, 0, kRapidPvst},
                                                       Event{kRoot, 30, kPort + 1, 1, kRapidPvst}));
}

TEST_F(InconsistencyEvents, ComeOfVlansWhoseSpanningTreeIsSwitchedOff) {
  set("port.1.type_inconsistent", "1,10");
  EXPECT_THAT(set("rapid_pvst.disabled_vlans", "10"),
              ElementsAre(Event{kPvidAndType, 10, kPort + 1, 0, kRapidPvst}));
  EXPECT_THAT(set("rapid_pvst.disabled_vlans", ""),
              ElementsAre(Event{kPvidAndType, 10, kPort + 1, 2, kRapidPvst}));
}

TEST_F(InconsistencyEvents, ComeOfPortsThatJoinAPortChannelOrLeaveBridging) {
  set({{"port.1.root_inconsistent", "1"}, {"port.2.root_inconsistent", "10"}});
  EXPECT_THAT(set("port.1.channel", "2"), ElementsAre(Event{kRoot, 1, kPort + 1, 0, kRapidPvst}));
  EXPECT_THAT(set("port.1.channel", "0"), ElementsAre(Event{kRoot, 1, kPort + 1, 1, kRapidPvst}));
  EXPECT_THAT(set("port.2.switchport", "false"), ElementsAre(Event{kRoot, 10, kPort + 2, 0, kRapidPvst}));
}

TEST_F(InconsistencyEvents, ComeOfPortsThatVanish) {
  set("port.2.loop_inconsistent", "10");
  SwitchState state = switch_.state();
  state.ports.erase(2);
  EXPECT_THAT(replace(state), ElementsAre(Event{kLoop, 10, kPort + 2, 0, kRapidPvst}));
}

// Port 1 is in tree 10 in both modes: as a member of VLAN 10, and of VLAN 20, which instance 10 carries.
TEST_F(InconsistencyEvents, ComeOfAChangeOfMode) {
  set({{"port.1.root_inconsistent", "0,1,10"},
       {"port.2.loop_inconsistent", "10"},
       {"port.1.pvid_inconsistent", "10"}});
  EXPECT_THAT(set("switch.mode", "mst"),
              ElementsAre(Event{kPvidAndType, 10, kPort + 1, 0, kMst}, Event{kLoop, 10, kPort + 2, 0, kMst},
                          Event{kRoot, 0, kPort + 1, 1, kMst}, Event{kRoot, 1, kPort + 1, 0, kMst}));
  EXPECT_THAT(set("switch.mode", "rapid-pvst"), ElementsAre(Event{kPvidAndType, 10, kPort + 1, 1, kRapidPvst},
                                                            Event{kLoop, 10, kPort + 2, 1, kRapidPvst},
                                                            Event{kRoot, 0, kPort + 1, 0, kRapidPvst},
                                                            Event{kRoot, 1, kPort + 1, 1, kRapidPvst}));
}

TEST_F(InconsistencyEvents, ComeOfVlansThatChangeTheirInstance) {
  set("switch.mode", "mst");
  EXPECT_THAT(set("port.2.root_inconsistent", "10"), ElementsAre());
  EXPECT_THAT(set("mst.instance.10.vlans", "10,20"), ElementsAre(Event{kRoot, 10, kPort + 2, 1, kMst}));
  EXPECT_THAT(set("mst.instance.10.vlans", ""), ElementsAre(Event{kRoot, 10, kPort + 2, 0, kMst}));
}

TEST_F(InconsistencyEvents, ComeAfterTheChangeHasBeenPublished) {
  std::string order;
  switch_.on_change([&] { order += "change "; });
  switch_.on_inconsistencies([&](const std::vector<InconsistencyEvent> &events) {
    order += std::to_string(events.size()) + " events, rows: " +
             std::to_string(switch_.inconsistencies().root.tree_ports().by_port().size()) + "; ";
  });
  switch_.replace(with_value(switch_.state(), "port.1.root_inconsistent", "1"));
  switch_.replace(with_value(switch_.state(), "port.1.link", "down"));
  EXPECT_EQ(order, "change 1 events, rows: 1; change ");
}

TEST_F(InconsistencyEvents, MayGoUnheard) {
  Switch unheard(switch_.state());
  unheard.replace(with_value(unheard.state(), "port.1.root_inconsistent", "1"));
  EXPECT_TRUE(unheard.inconsistencies().root.tree_ports().contains({1, kPort + 1}));
}

}  // namespace
