// The source before the real thing: ovsdb-server and ovs-vswitchd, in a folder and a network namespace of
// their own, with a ring of three bridges. Skipped where they are not installed, or where namespaces are
// forbidden.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "sources/openvswitch/bridge_state.h"
#include "sources/openvswitch/openvswitch_source.h"
#include "support/packet_client.h"
#include "support/temporary_folder.h"

using namespace stpswitch;

namespace {

constexpr const char *kSchema = "/usr/share/openvswitch/vswitch.ovsschema";

struct Output {
  int status;
  std::string text;
};

Output output_of(const std::string &command) {
  // NOLINTNEXTLINE(cert-env33-c): commands of tests, written out in them
  FILE *const pipe = ::popen((command + " 2>&1").c_str(), "r");
  std::string text;
  std::array<char, 4096> buffer{};
  while (const size_t got = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
    text.append(buffer.data(), got);
  }
  return {::pclose(pipe), text};
}

// A process of the test's, in its network namespace, that ends with it.
class Daemon {
 public:
  Daemon(pid_t namespace_of, const std::vector<std::string> &command) : process_(::fork()) {
    if (process_ == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      std::vector<std::string> words = command;
      if (namespace_of != 0) {
        words.insert(words.begin(), {"nsenter", "-t", std::to_string(namespace_of), "-n"});
      } else if (::unshare(CLONE_NEWNET) != 0) {
        ::_exit(1);
      }
      std::vector<char *> arguments;
      arguments.reserve(words.size() + 1);
      for (std::string &word : words) {
        arguments.push_back(word.data());
      }
      arguments.push_back(nullptr);
      ::execvp(arguments[0], arguments.data());
      ::_exit(1);
    }
  }
  ~Daemon() {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
  Daemon(const Daemon &) = delete;
  Daemon &operator=(const Daemon &) = delete;

  pid_t process() const { return process_; }

 private:
  pid_t process_;
};

class RealOpenVSwitch : public testing::Test {
 protected:
  void SetUp() override {
    for (const char *const program :
         {"ovsdb-tool", "ovsdb-server", "ovs-vswitchd", "ovs-vsctl", "ip", "nsenter"}) {
      if (output_of(std::string("command -v ") + program).status != 0) {
        GTEST_SKIP() << program << " is not installed (packages openvswitch-switch, iproute2)";
      }
    }
    if (output_of("unshare -n true").status != 0) {
      GTEST_SKIP() << "network namespaces are forbidden here";
    }
    ASSERT_EQ(output_of("ovsdb-tool create " + folder_.path("conf.db") + " " + kSchema).status, 0);
    start_server();
    start_vswitchd();
    // Bridges a, b, c in a ring, and a second link from a to c.
    for (const char *const link : {"ab ba", "bc cb", "ca ac", "ac2 ca2"}) {
      const std::string ends = link;
      const size_t space = ends.find(' ');
      const std::string one = ends.substr(0, space);
      const std::string other = ends.substr(space + 1);
      ASSERT_EQ(
          in_namespace(std::string("ip link add ").append(one).append(" type veth peer name ").append(other))
              .status,
          0);
      ASSERT_EQ(in_namespace("ip link set " + one + " up").status, 0);
      ASSERT_EQ(in_namespace("ip link set " + other + " up").status, 0);
    }
    for (const auto &[bridge, priority] :
         std::vector<std::pair<std::string, std::string>>{{"a", "4096"}, {"b", "8192"}, {"c", "12288"}}) {
      std::string command = "add-br " + bridge + " -- set bridge ";
      command += bridge + " datapath_type=netdev rstp_enable=true other_config:rstp-priority=";
      vsctl(command + priority);
    }
    // Numbers that do not depend on the order in which ports are found.
    std::string ports;
    for (const char *const port :
         {"a ab 1", "a ac 2", "a ac2 3", "b ba 1", "b bc 2", "c ca 1", "c ca2 2", "c cb 3"}) {
      std::istringstream words(port);
      std::string bridge;
      std::string name;
      std::string number;
      words >> bridge >> name >> number;
      ports.append(" -- add-port ").append(bridge).append(" ").append(name);
      ports.append(" -- set port ").append(name).append(" other_config:rstp-port-num=").append(number);
    }
    vsctl(ports);
  }

  void start_server() {
    server_ = std::make_unique<Daemon>(
        0, std::vector<std::string>{"ovsdb-server", folder_.path("conf.db"), "--remote=punix:" + socket_,
                                    "--unixctl=" + folder_.path("db.ctl"),
                                    "--log-file=" + folder_.path("db.log"), "-vconsole:off",
                                    "--pidfile=" + folder_.path("ovsdb-server.pid")});
    ASSERT_TRUE(run_until(loop_, [this] {
      return output_of("ovs-vsctl --timeout=1 --db=unix:" + socket_ + " --no-wait init").status == 0;
    }));
  }

  void start_vswitchd() {
    ::setenv("OVS_RUNDIR", folder_.path(".").c_str(), 1);
    vswitchd_ = std::make_unique<Daemon>(
        server_->process(),
        std::vector<std::string>{"ovs-vswitchd", "unix:" + socket_, "--unixctl=" + folder_.path("vs.ctl"),
                                 "--log-file=" + folder_.path("vs.log"), "-vconsole:off",
                                 "--pidfile=" + folder_.path("ovs-vswitchd.pid")});
  }

  Output in_namespace(const std::string &command) const {
    return output_of("nsenter -t " + std::to_string(server_->process()) + " -n " + command);
  }

  std::string vsctl(const std::string &arguments) const {
    const Output output = output_of("ovs-vsctl --timeout=20 --db=unix:" + socket_ + " " + arguments);
    EXPECT_EQ(output.status, 0) << arguments << ": " << output.text;
    return output.text;
  }

  void watch(const std::vector<std::string> &bridges) {
    source_.emplace(&loop_, socket_, parse_watched_bridges(bridges));
    state_ = source_->start([this](SwitchState state) { state_ = std::move(state); });
  }

  // "ca Root Forwarding", sorted, of all ports of the tree: as the source says, and as rstp/show does.
  std::string told() const {
    const std::map<PortRole, std::string> roles = {{PortRole::kDisabled, "Disabled"},
                                                   {PortRole::kRoot, "Root"},
                                                   {PortRole::kDesignated, "Designated"},
                                                   {PortRole::kAlternate, "Alternate"},
                                                   {PortRole::kBackup, "Backup"}};
    const std::map<PortState, std::string> states = {{PortState::kBlocking, "Discarding"},
                                                     {PortState::kLearning, "Learning"},
                                                     {PortState::kForwarding, "Forwarding"}};
    std::set<std::string> lines;
    for (const auto &[number, port] : state_.ports) {
      if (port.role.in(kCistId) && port.state.in(kCistId)) {
        lines.insert(port.name + " " + roles.at(*port.role.in(kCistId)) + " " +
                     states.at(*port.state.in(kCistId)) + " " + std::to_string(*port.priority) + "." +
                     std::to_string(*port.numbers.port_id & 0xFFFU) + "\n");
      }
    }
    return joined(lines);
  }
  std::string shown(const std::string &bridge) const {
    std::istringstream text(
        output_of("ovs-appctl -t " + folder_.path("vs.ctl") + " rstp/show " + bridge).text);
    std::set<std::string> lines;
    bool is_port = false;
    for (std::string line; std::getline(text, line);) {
      std::istringstream words(line);
      std::string name;
      std::string role;
      std::string state;
      std::string cost;
      std::string id;
      if (is_port && words >> name >> role >> state >> cost >> id) {
        lines.insert(name.append(" ").append(role).append(" ").append(state).append(" ").append(id) + "\n");
      }
      is_port = is_port || line.find("------") != std::string::npos;
    }
    return joined(lines);
  }
  static std::string joined(const std::set<std::string> &lines) {
    std::string text;
    for (const std::string &line : lines) {
      text += line;
    }
    return text;
  }

  bool wait_for(const std::string &ports) {
    return run_until(loop_, [&] { return told() == ports; });
  }
  bool wait_for_nothing() {
    return run_until(loop_, [&] { return state_.settings.mode == std::nullopt && state_.ports.empty(); });
  }

  EventLoop loop_;
  TemporaryFolder folder_;
  std::string socket_ = folder_.path("db.sock");
  std::unique_ptr<Daemon> server_;
  std::unique_ptr<Daemon> vswitchd_;
  std::optional<OpenVSwitchSource> source_;
  SwitchState state_;
};

constexpr const char *kConverged =
    "ca Root Forwarding 128.1\nca2 Alternate Discarding 128.2\ncb Alternate Discarding 128.3\n";

TEST_F(RealOpenVSwitch, IsToldAsItSaysItself) {
  // Numbers that do not depend on the order in which ports are found.
  watch({"c"});
  ASSERT_TRUE(wait_for(kConverged)) << told() << shown("c");
  EXPECT_EQ(shown("c"), kConverged);
  EXPECT_EQ(state_.trees.at(0).observed.root_port, 129U);
  EXPECT_EQ(state_.trees.at(0).observed.root_cost, 2000U);
  EXPECT_EQ(state_.trees.at(0).settings.priority, 12288U);
  EXPECT_EQ(vsctl("get interface ca ifindex"),
            std::to_string(*state_.ports.at(1).numbers.if_mib_index) + "\n");

  // A pulled link: the alternate port takes over; and the way back.
  ASSERT_EQ(in_namespace("ip link set ac down").status, 0);
  const std::string failed_over =
      "ca Disabled Discarding 128.1\nca2 Root Forwarding 128.2\ncb Alternate Discarding 128.3\n";
  ASSERT_TRUE(wait_for(failed_over)) << told();
  EXPECT_EQ(shown("c"), failed_over);
  EXPECT_EQ(state_.ports.at(1).link_up, false);
  ASSERT_EQ(in_namespace("ip link set ac up").status, 0);
  ASSERT_TRUE(wait_for(kConverged)) << told();

  // Neither program's end leaves anything stale behind.
  vswitchd_.reset();
  ASSERT_TRUE(wait_for_nothing());
  start_vswitchd();
  ASSERT_TRUE(wait_for(kConverged)) << told();
  server_ = nullptr;
  ASSERT_TRUE(wait_for_nothing());
}

TEST_F(RealOpenVSwitch, IsOneSwitchOfSeveralBridges) {
  watch({"b=20", "c=10", "d=30"});
  ASSERT_TRUE(run_until(loop_, [this] {
    return state_.ports.contains(1) && state_.ports.contains(257) &&
           state_.ports.at(1).role.in(20) == PortRole::kRoot &&
           state_.ports.at(257).role.in(10) == PortRole::kRoot;
  }));
  EXPECT_EQ(state_.ports.at(1).name, "ba");
  EXPECT_EQ(state_.ports.at(257).name, "ca");
  EXPECT_EQ(state_.trees.at(20).observed.root_id, state_.trees.at(10).observed.root_id);
  EXPECT_EQ(print_vlans(state_.rapid_pvst.disabled_vlans), "30");
  vsctl("set bridge b rstp_enable=false");
  ASSERT_TRUE(run_until(loop_, [this] { return !state_.trees.contains(20); }));
  EXPECT_EQ(print_vlans(state_.rapid_pvst.disabled_vlans), "20,30");
  vsctl("del-br c");
  ASSERT_TRUE(wait_for_nothing());
}

}  // namespace
