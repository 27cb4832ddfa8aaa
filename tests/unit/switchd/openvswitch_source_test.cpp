// The source of Open vSwitch's bridges, before a server that says what the test has it say.
#include "sources/openvswitch/openvswitch_source.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "keys/config_error.h"
#include "sources/openvswitch/bridge_state.h"
#include "support/fake_ovsdb.h"
#include "support/packet_client.h"
#include "support/temporary_folder.h"

using namespace stpswitch;
using namespace std::chrono_literals;

namespace {

using testing::HasSubstr;
using testing::Not;

const std::string kSchema = R"({"tables":{
    "Open_vSwitch":{"columns":{"other_config":{},"bridges":{}}},
    "Bridge":{"columns":{"name":{},"ports":{},"rstp_enable":{},"stp_enable":{},"rstp_status":{},"other_config":{},"x":{}}},
    "Port":{"columns":{"name":{},"interfaces":{},"tag":{},"trunks":{},"vlan_mode":{},"rstp_status":{},
                       "rstp_statistics":{},"other_config":{}}},
    "Interface":{"columns":{"name":{},"ofport":{},"ifindex":{},"link_state":{},"duplex":{}}}}})";

std::string port_row(const std::string &role) {
  return R"({"name":"p1","interfaces":["uuid","i1"],"rstp_status":["map",[["rstp_port_id","8001"],["rstp_port_role",")" +
         role + R"("]]]})";
}

// A root bridge with a port in a role.
std::string rows_with(const std::string &role, const std::string &bridge = "br0") {
  return R"({"Bridge":{"b":{"new":{"name":")" + bridge + R"(","ports":["uuid","p"],"rstp_enable":true,
             "rstp_status":["map",[["rstp_bridge_id","8.000.00005e005301"]]]}}},"Port":{"p":{"new":)" +
         port_row(role) + "}}}";
}

std::string update(const std::string &table_updates) {
  return R"({"id":null,"method":"update","params":["stp-switchd",)" + table_updates + "]}";
}

std::string role_update(const std::string &role) {
  return update(R"({"Port":{"p":{"old":{"rstp_status":["map",[]]},"new":)" + port_row(role) + "}}}");
}

class OpenVSwitchSources : public testing::Test {
 protected:
  OpenVSwitchSources() {
    server_.schema = kSchema;
    server_.rows = rows_with("Root");
    times_.first_rows = 0ms;
    times_.database = {.silence = 100ms, .patience = 2'000ms, .first_retry = 10ms, .last_retry = 20ms};
    times_.daemon = {.between_looks = 10ms, .settling = 10ms, .leniency = 50ms};
    testing::internal::CaptureStderr();
  }
  ~OpenVSwitchSources() override {
    if (!has_log_) {
      testing::internal::GetCapturedStderr();
    }
  }

  void start() {
    source_.emplace(&loop_, folder_.path("db.sock"), std::vector<WatchedBridge>{{"br0", {}}}, times_);
    now_ = source_->start([this](SwitchState state) {
      EXPECT_NE(state, now_);
      now_ = std::move(state);
      ++states_;
    });
  }

  void start_and_read() {
    server_.listen();
    start();
    ASSERT_TRUE(wait_for_role(PortRole::kRoot));
  }

  std::optional<PortRole> role() const {
    const auto port = now_.ports.find(1);
    return port != now_.ports.end() ? port->second.role.in(0) : std::nullopt;
  }
  bool wait_for_role(PortRole role_then) {
    return run_until(loop_, [&] { return role() == role_then; });
  }
  bool wait_for_nothing() {
    return run_until(loop_, [&] { return now_ == unknown_state({{"br0", {}}}); });
  }
  bool wait_for_connections(int count) {
    return run_until(loop_, [&] { return server_.connections >= count; });
  }

  std::string log() {
    has_log_ = true;
    return testing::internal::GetCapturedStderr();
  }

  EventLoop loop_;
  TemporaryFolder folder_;
  FakeOvsdb server_{&loop_, folder_.path("db.sock")};
  OpenVSwitchTimes times_;
  std::optional<OpenVSwitchSource> source_;
  SwitchState now_;
  int states_ = 0;
  bool has_log_ = false;
};

TEST_F(OpenVSwitchSources, MonitorTheColumnsThatTheSchemaHas) {
  server_.schema = R"({"tables":{"Bridge":{"columns":{"name":{},"ports":{},"rstp_status":{}}},
                                 "Port":{"columns":{"rstp_status":{},"interfaces":{}}},"Interface":{"columns":7}}})";
  start_and_read();
  ASSERT_GE(server_.received.size(), 2U);
  EXPECT_EQ(server_.received[0], R"({"id":"schema","method":"get_schema","params":["Open_vSwitch"]})");
  EXPECT_EQ(
      server_.received[1],
      R"({"id":"monitor","method":"monitor","params":["Open_vSwitch","stp-switchd",)"
      R"({"Bridge":[{"columns":["name","ports","rstp_status"]}],"Port":[{"columns":["interfaces","rstp_status"]}]}]})");
}

TEST_F(OpenVSwitchSources, TellChangedStatesOnly) {
  start_and_read();
  EXPECT_EQ(states_, 1);
  server_.send(role_update("Root") + role_update("Root"));
  server_.send(update(R"({"Interface":{"i2":{"new":{"name":"other"}}}})"));
  server_.send(role_update("Alternate"));
  ASSERT_TRUE(wait_for_role(PortRole::kAlternate));
  EXPECT_EQ(states_, 2);
}

TEST_F(OpenVSwitchSources, MakeOneStateOfABurst) {
  start_and_read();
  server_.send(role_update("Alternate") + role_update("Backup") + role_update("Designated"));
  ASSERT_TRUE(wait_for_role(PortRole::kDesignated));
  EXPECT_EQ(states_, 2);
}

// Twelve bonds beside the port, on which Open vSwitch runs no RSTP.
TEST_F(OpenVSwitchSources, NameNoMoreThanTenPortsThatAreLeftOutAtOnce) {
  std::string ports = R"(["uuid","p"])";
  std::string rows;
  for (int number = 1; number <= 12; ++number) {
    const std::string bond = "bond" + std::to_string(number);
    ports += R"(,["uuid",")" + bond + R"("])";
    rows += ",\"" + bond + R"(":{"new":{"name":")";
    rows += bond + R"(","interfaces":["set",[["uuid","i1"],["uuid","i2"]]]}})";
  }
  server_.rows =
      R"({"Bridge":{"b":{"new":{"name":"br0","rstp_enable":true,"ports":["set",[)" + ports +
      R"(]],"rstp_status":["map",[["rstp_bridge_id","8.000.00005e005301"]]]}}},"Port":{"p":{"new":)" +
      port_row("Root") + "}" + rows + "}}";
  start_and_read();
  const std::string text = log();
  EXPECT_THAT(text, HasSubstr("port 'bond7' is left out"));
  EXPECT_THAT(text, Not(HasSubstr("port 'bond9' is left out")));
  EXPECT_THAT(text, HasSubstr("2 more ports are left out\n"));
}

TEST_F(OpenVSwitchSources, AnswerEchoes) {
  start_and_read();
  server_.received.clear();
  server_.send(R"({"method":"echo","params":["a",1],"id":{"x":"y"}})");
  ASSERT_TRUE(run_until(loop_, [&] { return !server_.received.empty(); }));
  EXPECT_EQ(server_.received[0], R"({"error":null,"id":{"x":"y"},"result":["a",1]})");
}

TEST_F(OpenVSwitchSources, WaitForAServer) {
  start();
  EXPECT_EQ(now_, unknown_state({{"br0", {}}}));
  server_.listen();
  ASSERT_TRUE(wait_for_role(PortRole::kRoot));
  EXPECT_EQ(log(),
            "stp-switchd: Open vSwitch's database at " + folder_.path("db.sock") +
                " cannot be read: No such file or directory: is Open vSwitch running? (systemctl start "
                "openvswitch-switch)\n"
                "stp-switchd: Open vSwitch's database at " +
                folder_.path("db.sock") + " is read\n");
}

TEST_F(OpenVSwitchSources, KnowNothingWhileTheServerIsGone) {
  start_and_read();
  server_.stop();
  ASSERT_TRUE(wait_for_nothing());
  server_.rows = rows_with("Alternate");
  server_.listen();
  ASSERT_TRUE(wait_for_role(PortRole::kAlternate));
  EXPECT_EQ(states_, 3);
}

TEST_F(OpenVSwitchSources, NoticeAServerThatHangs) {
  start_and_read();
  server_.hangs = true;
  ASSERT_TRUE(wait_for_nothing());
  server_.hangs = false;
  ASSERT_TRUE(wait_for_role(PortRole::kRoot));
  EXPECT_THAT(log(), HasSubstr("cannot be read: the server does not answer\n"));
}

TEST_F(OpenVSwitchSources, StayConnectedWhileASilentServerAnswers) {
  start_and_read();
  const auto is_echo = [](const std::string &text) { return text.find("\"echo\"") != std::string::npos; };
  ASSERT_TRUE(run_until(
      loop_, [&] { return std::count_if(server_.received.begin(), server_.received.end(), is_echo) >= 3; }));
  EXPECT_EQ(server_.connections, 1);
}

TEST_F(OpenVSwitchSources, NoticeAServerThatOnlyAnswersEchoes) {
  times_.database.patience = 300ms;
  server_.rows.clear();
  server_.listen();
  start();
  ASSERT_TRUE(wait_for_connections(2));
  server_.rows = rows_with("Root");
  ASSERT_TRUE(wait_for_role(PortRole::kRoot));
  EXPECT_THAT(log(), HasSubstr("cannot be read: the server does not say what is in the database\n"));
}

TEST_F(OpenVSwitchSources, ReadAnewAfterWhatTheyDoNotUnderstand) {
  start_and_read();
  int connections = 1;
  for (const std::string &text : {std::string("x"), std::string("[]"), std::string("{x}"), std::string("{]"),
                                  update("7"), update(R"({"Port":7})"), update(R"({"Port":{"p":{"new":7}}})"),
                                  std::string(R"({"id":null,"method":"update","params":7})"),
                                  std::string(R"({"id":"monitor","result":7,"error":null})"),
                                  std::string(R"({"id":"other","result":null,"error":"no \u001b"})"),
                                  "{\"" + std::string(100'000, '[') + "\":" + std::string(100, '[')}) {
    server_.send(text);
    ASSERT_TRUE(wait_for_connections(++connections)) << text;
    ASSERT_TRUE(wait_for_role(PortRole::kRoot)) << text;
  }
  EXPECT_THAT(log(), HasSubstr("the server refuses: \"no \\u001b\"\n"));
}

TEST_F(OpenVSwitchSources, IgnoreWhatIsNotForThem) {
  start_and_read();
  server_.send(R"({"id":null,"method":"locked","params":["x"]}{"method":"update2","params":[],"id":null})");
  server_.send(R"({"id":"echo","result":[],"error":null}{"id":7,"result":{},"error":null})");
  server_.send(role_update("Backup"));
  ASSERT_TRUE(wait_for_role(PortRole::kBackup));
  EXPECT_EQ(server_.connections, 1);
}

TEST_F(OpenVSwitchSources, WaitForTheDatabase) {
  server_.schema = "7";
  server_.listen();
  start();
  ASSERT_TRUE(wait_for_connections(2));
  server_.schema = kSchema;
  ASSERT_TRUE(wait_for_role(PortRole::kRoot));
}

TEST_F(OpenVSwitchSources, WaitForTheBridge) {
  server_.rows = rows_with("Root", "br1");
  server_.listen();
  start();
  ASSERT_TRUE(run_until(loop_, [&] { return server_.received.size() >= 2; }));
  server_.send(update(R"({"Bridge":{"b":{"old":{"name":"br1"}}}})"));
  server_.send(update(rows_with("Backup")));
  ASSERT_TRUE(wait_for_role(PortRole::kBackup));
  server_.send(update(R"({"Bridge":{"b":{"old":{"name":"br0"}}}})"));
  ASSERT_TRUE(wait_for_nothing());
}

TEST_F(OpenVSwitchSources, LogEachTroubleOnce) {
  start_and_read();
  const std::string without_bridge = update(R"({"Bridge":{"b":{"old":{"name":"br0"}}}})");
  server_.send(without_bridge);
  ASSERT_TRUE(wait_for_nothing());
  server_.stop();
  server_.rows = "{}";
  server_.listen();
  ASSERT_TRUE(wait_for_connections(2));
  ASSERT_TRUE(run_until(loop_, [&] { return server_.received.size() >= 4; }));
  server_.send(update(rows_with("Root")));
  ASSERT_TRUE(wait_for_role(PortRole::kRoot));
  const std::string database = "stp-switchd: Open vSwitch's database at " + folder_.path("db.sock");
  EXPECT_EQ(log(), "stp-switchd: bridge 'br0' does not exist: waiting for 'ovs-vsctl add-br br0'\n" +
                       database + " cannot be read: the server has hung up\n" + database +
                       " is read\n"
                       "stp-switchd: bridge 'br0' has a spanning tree\n");
}

// What is in the database says that it is written again and again, and it is not.
TEST_F(OpenVSwitchSources, KnowNothingWithoutSignsOfLife) {
  std::string rows = rows_with("Root");
  const std::string name = R"("name":"p1")";
  rows.insert(rows.find(name), R"("rstp_statistics":["map",[["rstp_uptime",1]]],)");
  server_.rows = rows;
  server_.listen();
  start();
  ASSERT_TRUE(run_until(loop_, [&] { return server_.received.size() >= 2; }));
  for (int turn = 0; turn < 20; ++turn) {
    event_base_loop(loop_.base(), EVLOOP_ONCE);
  }
  EXPECT_EQ(now_, unknown_state({{"br0", {}}}));
  server_.send(role_update("Backup"));
  ASSERT_TRUE(wait_for_role(PortRole::kBackup));
  EXPECT_EQ(log(),
            "stp-switchd: ovs-vswitchd has yet to show a sign of life: nothing is known of its bridges until "
            "it runs (systemctl status openvswitch-switch)\n"
            "stp-switchd: ovs-vswitchd runs\n");
}

TEST_F(OpenVSwitchSources, LetNobodySetAnything) {
  start_and_read();
  const auto refusal_of = [this](const std::string &key) -> std::string {
    try {
      source_->with_value(now_, key, "1");
    } catch (const ConfigError &error) {
      return error.what();
    }
    return "none";
  };
  EXPECT_EQ(refusal_of("port.1.path_cost"),
            "port.1.path_cost: is set with 'ovs-vsctl set port p1 other_config:rstp-path-cost=N'");
  EXPECT_EQ(refusal_of("bridge.priority"),
            "bridge.priority: is set with 'ovs-vsctl set bridge br0 other_config:rstp-priority=N'");
  EXPECT_EQ(refusal_of("port.1.link"),
            "port.1.link: cannot be set: it is what Open vSwitch says, or does not say");
  EXPECT_EQ(source_->original(), std::nullopt);
  const OpenVSwitchSource several(&loop_, "", {{"br10", 10}, {"br20", 20}});
  EXPECT_THAT([&] { several.with_value(now_, "tree.20.priority", "1"); },
              testing::ThrowsMessage<ConfigError>(
                  "tree.20.priority: is set with 'ovs-vsctl set bridge br20 other_config:rstp-priority=N'"));
}

TEST_F(OpenVSwitchSources, SayThatAPathIsTooLong) {
  source_.emplace(&loop_, std::string(200, 'x'), std::vector<WatchedBridge>{{"br0", {}}}, times_);
  EXPECT_EQ(source_->start([](const SwitchState &) {}), unknown_state({{"br0", {}}}));
  EXPECT_THAT(log(), HasSubstr("cannot be read: the path is longer than 107 octets\n"));
}

}  // namespace
