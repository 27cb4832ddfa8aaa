// The source that reads Linux bridges, with bridges of this machine's kernel.
#include "sources/linux_bridge/linux_bridge_source.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "keys/config_error.h"
#include "model/numbering.h"
#include "model/refusal.h"
#include "support/network_namespace.h"

using namespace stpswitch;
using testing::ElementsAre;
using testing::Key;
using testing::SizeIs;

namespace {

constexpr char kQuickTimers[] = " forward_delay 200 hello_time 100 max_age 600";

class LinuxBridges : public testing::Test {
 protected:
  void SetUp() override {
    if (!namespace_.refusal().empty()) {
      GTEST_SKIP() << namespace_.refusal();
    }
    testing::internal::CaptureStderr();
    is_captured_ = true;
  }

  void TearDown() override {
    if (is_captured_) {
      log();
    }
  }

  // What has been logged since the last time.
  std::string log() {
    is_captured_ = false;
    return testing::internal::GetCapturedStderr();
  }

  static void ip(const std::string &lines) { ASSERT_TRUE(NetworkNamespace::run_ip(lines)) << lines; }

  static void run(const std::string &command) { ASSERT_TRUE(NetworkNamespace::run(command)) << command; }

  static std::string add_bridge(const std::string &name, const std::string &options = "") {
    return "link add " + name + " type bridge stp_state 1" + kQuickTimers + options + "\n" + "link set " +
           name + " up\n";
  }

  static std::string add_cable(const std::string &end, const std::string &other) {
    return "link add " + end + " type veth peer name " + other + "\n";
  }

  static std::string plug(const std::string &port, const std::string &bridge) {
    return "link set " + port + " master " + bridge + " up\n";
  }

  // So often does the bridge change then that the kernel's notifications do not fit into memory.
  static std::string more_than_fits() {
    constexpr int kChanges = 4000;
    std::string flood;
    for (int i = 0; i < kChanges; ++i) {
      flood += "link set br0 txqueuelen " + std::to_string(1000 + i % 2) + "\n";
    }
    return flood;
  }

  void start(const std::string &bridge = "br0") {
    source_ = std::make_unique<LinuxBridgeSource>(&loop_, bridge);
    state_ = source_->start([this](SwitchState state) {
      EXPECT_NE(state, state_);
      state_ = std::move(state);
    });
  }

  // What a source says that begins now.
  SwitchState fresh_state() {
    EventLoop loop;
    LinuxBridgeSource source(&loop, "br0");
    return source.start([](const SwitchState &) {});
  }

  // Runs the loop until the condition holds; that it comes to hold at all is what counts.
  template <class Condition>
  bool comes(Condition &&condition) {
    const auto give_up = std::chrono::steady_clock::now() + std::chrono::minutes(5);
    while (!condition()) {
      if (std::chrono::steady_clock::now() > give_up) {
        return false;
      }
      event_base_loop(loop_.base(), EVLOOP_ONCE);
    }
    return true;
  }

  bool is_running() const { return state_.settings.mode.has_value(); }

  std::optional<PortRole> role(uint32_t number) const {
    const auto port = state_.ports.find(number);
    return port != state_.ports.end() ? port->second.role.in(kCistId) : std::nullopt;
  }

  bool is_inconsistent(uint32_t number) const { return !state_.ports.at(number).inconsistencies.empty(); }

  std::optional<BridgeId> root() const { return state_.trees.at(kCistId).observed.root_id; }

  NetworkNamespace namespace_;
  EventLoop loop_;
  std::unique_ptr<LinuxBridgeSource> source_;
  SwitchState state_;

 private:
  bool is_captured_ = false;
};

TEST_F(LinuxBridges, AreReadAtTheStart) {
  ip(add_bridge("br0", " priority 4096") + "link set br0 address 02:00:5e:00:53:10\n" +
     add_cable("v0", "w0") + add_cable("v1", "w1") + "link set w0 up\n" + plug("v0", "br0") +
     plug("v1", "br0"));
  run("bridge link set dev v1 cost 17 priority 16 root_block on");
  // The kernel tells a bridge of a link a moment later.
  run("timeout 60 sh -c 'while bridge link show dev v0 | grep -q \"state disabled\"; do :; done'");
  start();
  EXPECT_EQ(state_.settings.name, "br0");
  EXPECT_EQ(state_.settings.mode, SpanningTreeMode::kMst);
  ASSERT_THAT(state_.trees, ElementsAre(Key(kCistId)));
  const Tree &tree = state_.trees.at(kCistId);
  EXPECT_EQ(tree.settings.priority, 4096U);
  EXPECT_EQ(tree.observed.bridge_id, parse_bridge_id("1000.02005e005310"));
  EXPECT_EQ(tree.observed.root_id, tree.observed.bridge_id);
  EXPECT_EQ(tree.observed.root_cost, 0U);
  EXPECT_EQ(tree.observed.root_port, 0U);
  EXPECT_EQ(tree.observed.timers_in_force, (Timers{600, 100, 200}));
  ASSERT_THAT(state_.ports, ElementsAre(Key(1U), Key(2U)));
  const Port &v0 = state_.ports.at(1);
  EXPECT_EQ(v0.name, "v0");
  EXPECT_EQ(v0.link_up, true);
  EXPECT_EQ(v0.root_guard, false);
  EXPECT_EQ(v0.role.in(kCistId), PortRole::kDesignated);
  const Port &v1 = state_.ports.at(2);
  EXPECT_EQ(v1.name, "v1");
  EXPECT_EQ(v1.link_up, false);
  EXPECT_EQ(v1.path_cost, 17U);
  EXPECT_EQ(v1.priority, 64U);
  EXPECT_EQ(v1.root_guard, true);
  EXPECT_EQ(v1.numbers.port_id, 0x4002U);
  EXPECT_EQ(v1.role.in(kCistId), PortRole::kDisabled);
  EXPECT_EQ(v1.state.in(kCistId), PortState::kDisabled);
  EXPECT_EQ(log(), "");
}

TEST_F(LinuxBridges, AreWaitedFor) {
  start();
  EXPECT_FALSE(is_running());
  EXPECT_TRUE(state_.ports.empty());
  ip(add_bridge("br0"));
  EXPECT_TRUE(comes([this] { return is_running(); }));
  ip(add_cable("v0", "v1") + plug("v0", "br0"));
  EXPECT_TRUE(comes([this] { return state_.ports.size() == 1; }));
  ip("link del br0\n");
  EXPECT_TRUE(comes([this] { return !is_running(); }));
  EXPECT_TRUE(state_.ports.empty());
  EXPECT_TRUE(state_.trees.empty());
  ip(add_bridge("br0") + plug("v0", "br0") + plug("v1", "br0"));
  EXPECT_TRUE(comes([this] { return is_running() && state_.ports.size() == 2; }));
  EXPECT_EQ(log(),
            "stp-switchd: there is no bridge br0: waiting for it; 'ip link add br0 type bridge stp_state 1' "
            "makes one\n"
            "stp-switchd: bridge br0 is there, and runs a spanning tree\n"
            "stp-switchd: there is no bridge br0: waiting for it; 'ip link add br0 type bridge stp_state 1' "
            "makes one\n"
            "stp-switchd: bridge br0 is there, and runs a spanning tree\n");
}

// In one burst: nobody sees that it was away, but its new index.
TEST_F(LinuxBridges, AreTheSameByName) {
  ip(add_bridge("br0") + add_cable("v0", "v1") + plug("v0", "br0"));
  start();
  ip("link del br0\n" + add_bridge("br0") + plug("v1", "br0"));
  EXPECT_TRUE(
      comes([this] { return is_running() && state_.ports.size() == 1 && state_.ports.at(1).name == "v1"; }));
}

TEST_F(LinuxBridges, MayBeRenamed) {
  ip(add_bridge("br0") + add_cable("v0", "v1") + plug("v0", "br0"));
  start();
  EXPECT_TRUE(is_running());
  ip("link set br0 down\nlink set br0 name br9\nlink set br9 up\n");
  EXPECT_TRUE(comes([this] { return !is_running(); }));
  ip("link set br9 down\nlink set br9 name br0\nlink set br0 up\n");
  EXPECT_TRUE(comes([this] { return is_running() && state_.ports.size() == 1; }));
}

TEST_F(LinuxBridges, AreNotAnyInterface) {
  ip(add_cable("br0", "v0"));
  start();
  EXPECT_FALSE(is_running());
  ip("link del br0\n" + add_bridge("br0"));
  EXPECT_TRUE(comes([this] { return is_running(); }));
  EXPECT_EQ(log(),
            "stp-switchd: br0 is an interface, but no bridge: waiting for a bridge of that name\n"
            "stp-switchd: bridge br0 is there, and runs a spanning tree\n");
}

TEST_F(LinuxBridges, MayRunNoSpanningTree) {
  ip("link add br0 type bridge\n" + add_cable("v0", "v1") + plug("v0", "br0"));
  start();
  EXPECT_FALSE(is_running());
  EXPECT_TRUE(state_.trees.empty());
  ip("link set br0 type bridge stp_state 1\n");
  EXPECT_TRUE(comes([this] { return is_running() && !state_.trees.empty(); }));
  EXPECT_EQ(log(),
            "stp-switchd: bridge br0 runs no spanning tree: 'ip link set dev br0 type bridge stp_state 1' "
            "switches it on\n"
            "stp-switchd: bridge br0 is there, and runs a spanning tree\n");
}

TEST_F(LinuxBridges, GainAndLosePorts) {
  ip(add_bridge("br0") + add_cable("v0", "v1") + add_cable("v2", "v3") + plug("v0", "br0") +
     plug("v2", "br0"));
  start();
  ASSERT_THAT(state_.ports, ElementsAre(Key(1U), Key(2U)));
  ip("link set v0 nomaster\n");
  EXPECT_TRUE(comes([this] { return !state_.ports.contains(1); }));
  EXPECT_EQ(state_.ports.at(2).name, "v2");
  ip(plug("v3", "br0"));
  EXPECT_TRUE(comes([this] { return state_.ports.size() == 2 && state_.ports.at(1).name == "v3"; }));
  ip("link set v3 down\nlink set v3 name renamed\n");
  EXPECT_TRUE(comes([this] { return state_.ports.at(1).name == "renamed"; }));
  ip("link del v2\n");
  EXPECT_TRUE(comes([this] { return state_.ports.empty(); }));
}

TEST_F(LinuxBridges, HaveBondsAsPortChannels) {
  if (!NetworkNamespace::run_ip("link add bond0 type bond mode active-backup miimon 100\n")) {
    GTEST_SKIP() << "this kernel has no bonding driver";
  }
  ip(add_bridge("br0") + add_cable("v0", "w0") + add_cable("v1", "w1") + "link set w0 up\nlink set w1 up\n" +
     "link set v0 master bond0\nlink set v1 master bond0\n" + plug("bond0", "br0"));
  start();
  EXPECT_TRUE(comes([this] {
    return state_.port_channels.contains(1) && state_.port_channels.at(1).link_up == true &&
           state_.ports.size() == 2;
  }));
  for (const auto &[number, member] : state_.ports) {
    EXPECT_GE(number, kFirstMember);
    EXPECT_EQ(member.channel, 1U);
    EXPECT_EQ(member.link_up, true);
  }
  ip("link set w1 down\n");
  EXPECT_TRUE(comes([this] { return state_.ports.rbegin()->second.link_up == false; }));
  EXPECT_EQ(state_.port_channels.at(1).link_up, true);
  ip("link set v1 nomaster\n");
  EXPECT_TRUE(comes([this] { return state_.ports.size() == 1; }));
  ip("link set v1 down\nlink set v1 master bond0\n");
  EXPECT_TRUE(comes([this] { return state_.ports.size() == 2; }));
  ip("link del bond0\n");
  EXPECT_TRUE(comes([this] { return state_.ports.empty() && state_.port_channels.empty(); }));
}

TEST_F(LinuxBridges, FilterVlans) {
  if (!NetworkNamespace::run_ip(add_bridge("br0", " vlan_filtering 1"))) {
    GTEST_SKIP() << "this kernel's bridges do not filter VLANs";
  }
  ip(add_cable("v0", "v1") + plug("v0", "br0"));
  run("bridge vlan add dev v0 vid 10-19");
  start();
  EXPECT_EQ(print_vlans(state_.ports.at(1).vlans), "1,10-19");
  run("bridge vlan del dev v0 vid 1");
  EXPECT_TRUE(comes([this] { return print_vlans(state_.ports.at(1).vlans) == "10-19"; }));
  run("bridge vlan del dev v0 vid 10-19");
  EXPECT_TRUE(comes([this] { return state_.ports.at(1).vlans.is_empty(); }));
}

// One state for many changes, and the last one is right.
TEST_F(LinuxBridges, EndBurstsInTheRightState) {
  constexpr int kCables = 4;
  constexpr int kRounds = 60;
  std::string setup = add_bridge("br0");
  std::string changes;
  for (int i = 0; i < kCables; ++i) {
    const std::string number = std::to_string(i);
    setup += add_cable("v" + number, "w" + number) + plug("v" + number, "br0");
  }
  for (int round = 0; round < kRounds; ++round) {
    for (int i = 0; i < kCables; ++i) {
      changes += "link set w" + std::to_string(i) + ((round + i) % 2 == 0 ? " up\n" : " down\n");
    }
  }
  ip(setup);
  start();
  ip(changes);
  const auto is_right = [this] {
    return state_.ports.at(1).link_up == false && state_.ports.at(2).link_up == true &&
           state_.ports.at(3).link_up == false && state_.ports.at(4).link_up == true;
  };
  EXPECT_TRUE(comes(is_right));
  EXPECT_TRUE(comes([this] { return state_.ports == fresh_state().ports; }));
  EXPECT_TRUE(is_right());
}

// The loop stands still while the kernel notifies of more than fits.
TEST_F(LinuxBridges, AreReadAnewWhenNotificationsAreLost) {
  ip(add_bridge("br0") + add_cable("v0", "v1") + add_cable("v2", "v3") + plug("v0", "br0") +
     plug("v2", "br0"));
  start();
  ip(more_than_fits() + "link set v0 nomaster\nlink set v3 up\n");
  EXPECT_TRUE(comes([this] { return state_.ports.size() == 1 && state_.ports.at(2).link_up == true; }));
  EXPECT_TRUE(comes([this] { return state_.ports == fresh_state().ports; }));
  EXPECT_EQ(log(),
            "stp-switchd: the kernel notified of more changes than fit into memory: everything is read "
            "anew\n");
}

// Ports that begin to forward again and again.
class ForwardingLinuxBridges : public LinuxBridges {
 protected:
  void SetUp() override {
    LinuxBridges::SetUp();
    if (IsSkipped()) {
      return;
    }
    ip(add_bridge("br0") + add_cable("v0", "w0") + "link set w0 up\n" + plug("v0", "br0"));
    if (!NetworkNamespace::run("ip link xstats type bridge_slave dev v0 | grep -q Transitions")) {
      GTEST_SKIP() << "this kernel does not count how often ports begin to forward";
    }
  }

  std::optional<uint32_t> transitions() const {
    const auto port = state_.ports.find(1);
    return port != state_.ports.end() ? port->second.forward_transitions : std::nullopt;
  }

  // Not heard of while the loop stands still.
  static void forward_again() {
    run("ip link set w0 down; ip link set w0 up");
    run("for i in $(seq 300); do "
        "ip link xstats type bridge_slave dev v0 | grep -q 'Forwarding: 2' && exit 0; sleep 0.1; "
        "done; exit 1");
  }
};

TEST_F(ForwardingLinuxBridges, CountIt) {
  start();
  EXPECT_TRUE(comes([this] { return transitions() == 1U; }));
  forward_again();
  EXPECT_TRUE(comes([this] { return transitions() == 2U; }));
  // A port that joins anew has a count of its own.
  ip("link set v0 nomaster\n" + plug("v0", "br0"));
  EXPECT_TRUE(comes([this] { return transitions() == 1U; }));
  ip("link set br0 type bridge stp_state 0\n");
  EXPECT_TRUE(comes([this] { return !is_running(); }));
  EXPECT_EQ(transitions(), std::nullopt);
}

TEST_F(ForwardingLinuxBridges, CountItWhenNotificationsAreLost) {
  start();
  EXPECT_TRUE(comes([this] { return transitions() == 1U; }));
  ip(more_than_fits());
  forward_again();
  EXPECT_TRUE(comes([this] { return transitions() == 2U; }));
  EXPECT_EQ(state_.ports.at(1).state.in(kCistId), PortState::kForwarding);
}

// The kernel tells of all of them at once, when it is asked for one port.
TEST_F(LinuxBridges, MayHaveMoreVlansThanFitIntoAnAnswer) {
  if (!NetworkNamespace::run_ip(add_bridge("br0", " vlan_filtering 1"))) {
    GTEST_SKIP() << "this kernel's bridges do not filter VLANs";
  }
  ip(add_cable("v0", "v1") + plug("v0", "br0") + plug("v1", "br0"));
  run("bridge vlan add dev v0 vid 2-4094");
  start();
  EXPECT_EQ(print_vlans(state_.ports.at(1).vlans), "1-4094");
  EXPECT_EQ(state_.ports.at(1).forward_transitions, std::nullopt);
  EXPECT_EQ(state_.ports.at(2).forward_transitions, 0U);
  EXPECT_EQ(log(), "");
}

TEST_F(LinuxBridges, HaveAThousandPorts) {
  constexpr size_t kPorts = 1000;
  std::string setup = add_bridge("br0");
  for (size_t i = 0; i < kPorts / 2; ++i) {
    const std::string end = "v" + std::to_string(i);
    const std::string other = "w" + std::to_string(i);
    setup += add_cable(end, other);
    // Not switched on: each cable is a loop.
    for (const std::string &port : {end, other}) {
      setup += "link set " + port + " master br0\n";
    }
  }
  ip(setup);
  start();
  EXPECT_THAT(state_.ports, SizeIs(kPorts));
  EXPECT_EQ(state_.ports.begin()->first, 1U);
  EXPECT_EQ(state_.ports.rbegin()->first, kPorts);
  EXPECT_EQ(state_.ports.at(kPorts).numbers.port_id, 0x8000U | kPorts);
  ip("link set v7 nomaster\n");
  EXPECT_TRUE(comes([this] { return state_.ports.size() == kPorts - 1; }));
}

TEST_F(LinuxBridges, RefuseEveryKeyWithWhatSetsIt) {
  ip(add_bridge("br0") + add_cable("v0", "v1") + plug("v0", "br0"));
  start();
  const auto refusal_of = [this](const std::string &key) {
    try {
      source_->with_value(state_, key, "1");
      return std::string("no error");
    } catch (const ConfigError &error) {
      return std::string(error.what());
    }
  };
  EXPECT_EQ(refusal_of("port.1.root_guard"),
            "port.1.root_guard: is set with 'bridge link set dev v0 root_block on|off'");
  EXPECT_EQ(refusal_of("port.1.path_cost"), "port.1.path_cost: is set with 'bridge link set dev v0 cost N'");
  EXPECT_EQ(refusal_of("port.1.priority"),
            "port.1.priority: is set with 'bridge link set dev v0 priority N/4'");
  EXPECT_EQ(refusal_of("port.1.link"), "port.1.link: is set with 'ip link set dev v0 up|down'");
  EXPECT_EQ(refusal_of("bridge.priority"),
            "bridge.priority: is set with 'ip link set dev br0 type bridge priority N'");
  EXPECT_EQ(refusal_of("mst.region"),
            "mst.region: cannot be set: stp-switchd only reads the Linux bridge, which has no such setting");
  EXPECT_EQ(source_->original(), std::nullopt);
}

std::string refusal_of_name(const std::string &name) {
  EventLoop loop;
  try {
    const LinuxBridgeSource source(&loop, name);
  } catch (const Refusal &refusal) {
    return refusal.what();
  }
  return "";
}

TEST(LinuxBridgeNames, AreThoseThatABridgeCanHave) {
  EXPECT_EQ(refusal_of_name("br0"), "");
  EXPECT_EQ(refusal_of_name(""), "'' cannot be a bridge's name, which has 1 to 15 octets");
  EXPECT_EQ(refusal_of_name("a-name-of-16-oct"),
            "'a-name-of-16-oct' cannot be a bridge's name, which has 1 to 15 octets");
  EXPECT_EQ(refusal_of_name("br\xFF"), "the name has characters that cannot be printed");
}

// Two bridges with two cables between them, br1 being the root.
class LinuxSpanningTrees : public LinuxBridges {
 protected:
  void SetUp() override {
    LinuxBridges::SetUp();
    if (IsSkipped()) {
      return;
    }
    ip(add_bridge("br0") + "link set br0 address 02:00:5e:00:53:10\n" + add_bridge("br1", " priority 4096") +
       "link set br1 address 02:00:5e:00:53:01\n" + add_cable("v0", "w0") + add_cable("v1", "w1") +
       plug("v0", "br0") + plug("v1", "br0") + plug("w0", "br1") + plug("w1", "br1"));
    start();
    if (!comes_soon([this] { return role(1) == PortRole::kRoot && role(2) == PortRole::kAlternate; })) {
      GTEST_SKIP() << "this kernel drops the spanning tree's packets in network namespaces";
    }
  }

  // Hello times are a second.
  template <class Condition>
  bool comes_soon(Condition &&condition) {
    const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    return comes([&] { return condition() || std::chrono::steady_clock::now() > give_up; }) && condition();
  }
};

TEST_F(LinuxSpanningTrees, AreFollowedWhenALinkFails) {
  EXPECT_EQ(root(), parse_bridge_id("1000.02005e005301"));
  EXPECT_EQ(state_.trees.at(kCistId).observed.root_port, 129U);
  EXPECT_EQ(state_.ports.at(2).designated.bridge, root());
  EXPECT_EQ(state_.ports.at(2).designated.port, 0x8002U);
  ip("link set w0 down\n");
  EXPECT_TRUE(comes([this] { return role(2) == PortRole::kRoot; }));
  EXPECT_EQ(role(1), PortRole::kDisabled);
  EXPECT_EQ(state_.trees.at(kCistId).observed.root_port, 130U);
  EXPECT_TRUE(comes([this] { return state_.ports.at(2).state.in(kCistId) == PortState::kForwarding; }));
  EXPECT_GT(state_.trees.at(kCistId).observed.topology_changes, 0U);
  EXPECT_NE(state_.trees.at(kCistId).observed.last_topology_change, std::nullopt);
}

TEST_F(LinuxSpanningTrees, HaveTimersOfTheirOwnBesideTheRoots) {
  const Timers quick = state_.trees.at(kCistId).observed.timers_in_force;
  EXPECT_EQ(state_.trees.at(kCistId).settings.timers, quick);
  ip("link set br0 type bridge max_age 1800 hello_time 300 forward_delay 1700\n");
  EXPECT_TRUE(comes([this] { return state_.trees.at(kCistId).settings.timers == Timers{1800, 300, 1700}; }));
  EXPECT_EQ(state_.trees.at(kCistId).observed.timers_in_force, quick);
  ip("link set br0 type bridge priority 0\n");
  EXPECT_TRUE(comes([this] { return state_.trees.at(kCistId).observed.root_port == 0U; }));
  EXPECT_EQ(state_.trees.at(kCistId).settings.timers, (Timers{1800, 300, 1700}));
  EXPECT_EQ(state_.trees.at(kCistId).observed.timers_in_force, (Timers{1800, 300, 1700}));
}

TEST_F(LinuxSpanningTrees, HaveRootInconsistentPorts) {
  ip("link set v1 nomaster\n");
  EXPECT_FALSE(is_inconsistent(1));
  run("bridge link set dev v0 root_block on");
  EXPECT_TRUE(comes([this] { return is_inconsistent(1); }));
  EXPECT_EQ(state_.ports.at(1).root_guard, true);
  EXPECT_EQ(root(), parse_bridge_id("8000.02005e005310"));
  // The better root is silent: the port comes to forward.
  ip("link set br1 type bridge stp_state 0\n");
  EXPECT_TRUE(comes([this] { return !is_inconsistent(1); }));
  EXPECT_TRUE(comes([this] { return state_.ports.at(1).state.in(kCistId) == PortState::kForwarding; }));
  EXPECT_FALSE(is_inconsistent(1));
}

TEST_F(LinuxSpanningTrees, HaveNoRootInconsistencyWithoutTheGuard) {
  ip("link set v1 nomaster\n");
  run("bridge link set dev v0 root_block on");
  EXPECT_TRUE(comes([this] { return is_inconsistent(1); }));
  run("bridge link set dev v0 root_block off");
  EXPECT_TRUE(comes([this] { return !is_inconsistent(1); }));
  EXPECT_TRUE(comes([this] { return role(1) == PortRole::kRoot; }));
}

}  // namespace
