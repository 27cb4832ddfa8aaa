// Where the switch's state comes from, with whatever is called for that failing. While a source begins,
// anything may end the process, with a line that says why; later, only the end of memory does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "every_fault.h"
#include "passing_time.h"
#include "sources/burst.h"
#include "sources/linux_bridge/linux_bridge_source.h"
#include "sources/openvswitch/bridge_state.h"
#include "sources/openvswitch/openvswitch_source.h"
#include "sources/scenario/loader.h"
#include "sources/scenario/scenario_source.h"
#include "support/fake_ovsdb.h"
#include "support/loop_thread.h"
#include "support/network_namespace.h"
#include "support/packet_client.h"
#include "support/temporary_folder.h"

using namespace stpswitch;
using namespace std::chrono_literals;

namespace {

using faults::kMemory;
using faults::kSystem;

using MakeSource = std::function<std::unique_ptr<Source>(EventLoop *loop)>;

// As long as the slowest of them waits before it looks again.
constexpr uint64_t kSecondMs = 1000;

// Lets the loop turn until a burst that has begun has ended.
void run_for_a_burst(const EventLoop &loop) {
  constexpr int kTurns = 3;
  for (int turn = 0; turn < kTurns; ++turn) {
    event_base_loop(loop.base(), EVLOOP_NONBLOCK);
    pass_ms(2 * std::chrono::milliseconds(Burst::kLength).count());
  }
}

// Without what the kernel is not asked for again before it changes (forward_transitions.h).
SwitchState comparable(SwitchState state) {
  for (auto &[number, port] : state.ports) {
    port.forward_transitions.reset();
  }
  return state;
}

// A source on a loop, and what it has told last.
struct Told {
  explicit Told(const MakeSource &make) : source(make(&loop)) {
    state = comparable(source->start([this](SwitchState told) { state = comparable(std::move(told)); }));
  }

  EventLoop loop;
  std::unique_ptr<Source> source;
  SwitchState state;
};

// Begins a source while calls fail. What it tells then is the right state, or that nothing is known; in the
// end it is the right one. `synchronize`: whom the source has asked notices that it has ended.
void strike_start(
    uint32_t kinds, const MakeSource &make, const SwitchState &nothing,
    const std::function<void()> &synchronize = [] {}) {
  SwitchState right;
  {
    Told model(make);
    ASSERT_TRUE(run_until(model.loop, [&] { return model.state != nothing; }));
    right = model.state;
  }
  std::optional<Told> told;
  faults::strike_every_call({kinds, [&told] { told.reset(); },
                             [&] {
                               try {
                                 told.emplace(make);
                               } catch (const std::exception &error) {
                                 EXPECT_STRNE(error.what(), "");
                               }
                             },
                             [&] {
                               if (told) {
                                 EXPECT_TRUE(told->state == right || told->state == nothing);
                                 EXPECT_TRUE(run_until(told->loop, [&] { return told->state == right; }));
                                 told.reset();
                               }
                               {
                                 Told next(make);
                                 EXPECT_TRUE(run_until(next.loop, [&] { return next.state == right; }));
                               }
                               synchronize();
                             }});
}

// What became of a process, and what it wrote to its log.
struct Ended {
  int status;
  std::string lines;
};

// Does the work in a process of its own, whose exit status is what the work returns.
Ended run_in_child(const std::function<int()> &work) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE *)> log(std::tmpfile(), std::fclose);
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(::fileno(log.get()), STDERR_FILENO);
    ::_exit(work());
  }
  Ended ended{};
  EXPECT_EQ(::waitpid(child, &ended.status, 0), child);
  std::rewind(log.get());
  for (int octet = std::fgetc(log.get()); octet != EOF; octet = std::fgetc(log.get())) {
    ended.lines += static_cast<char>(octet);
  }
  return ended;
}

// The same where the libraries that read what the source reads end the process at the end of memory, as
// destructors must not throw: each time in a process of its own.
void strike_start_at_end_of_memory(const MakeSource &make) {
  enum ExitStatus { kHasStruck, kHasNotStruck, kIsSilent };
  for (const bool lasts : {false, true}) {
    bool has_struck = true;
    for (uint64_t number = 1; has_struck && !testing::Test::HasFailure(); number = faults::behind(number)) {
      const Ended ended = run_in_child([&]() -> int {
        faults::Injection injection({number, lasts, 0, kMemory});
        try {
          const Told told(make);
        } catch (const std::exception &error) {
          injection.end();
          return *error.what() != '\0' ? kHasStruck : kIsSilent;
        }
        return injection.has_struck() ? kHasStruck : kHasNotStruck;
      });
      SCOPED_TRACE("call " + std::to_string(number) + (lasts ? ", fails from then on" : ", fails once") +
                   "\n" + ended.lines);
      if (WIFEXITED(ended.status)) {
        EXPECT_THAT(WEXITSTATUS(ended.status), testing::AnyOf(kHasStruck, kHasNotStruck));
        has_struck = WEXITSTATUS(ended.status) != kHasNotStruck;
      } else {
        EXPECT_EQ(WTERMSIG(ended.status), SIGABRT);
        EXPECT_THAT(ended.lines, testing::HasSubstr("terminate called"));
      }
    }
  }
}

// Something that the source is to hear of, each time another thing.
struct Change {
  std::function<void()> make;
  std::function<bool(const SwitchState &)> is_told_in;
};

// A burst of changes is read while system calls fail. The source tells of the change, of none or that nothing
// is known; in the end it tells of the change.
void strike_change(Told *told, const Change &change, const SwitchState &nothing) {
  SwitchState before;
  faults::strike_every_call(
      {kSystem,
       [&] {
         before = told->state;
         change.make();
       },
       [told] { run_for_a_burst(told->loop); },
       [&] {
         EXPECT_TRUE(change.is_told_in(told->state) || told->state == before || told->state == nothing);
         pass_ms(kSecondMs);
         EXPECT_TRUE(run_until(told->loop, [&] { return change.is_told_in(told->state); }));
       }});
}

TEST(Scenarios, AreLoadedOrRefused) {
  const TemporaryFolder folder;
  const std::string path = folder.write("small.toml", R"(
switch.mode = 'mst'
[[mst.instance]]
id = 10
vlans = '10'
[[port]]
number = 1
vlans = '1,10'
root_guard = true
)");
  const MakeSource make = [&path](EventLoop *) { return std::make_unique<ScenarioSource>(path); };
  strike_start(kSystem, make, {});
  strike_start_at_end_of_memory(make);
}

// A bridge of the kernel's with two ports, in a namespace of its own.
class LinuxBridges : public testing::Test {
 protected:
  void SetUp() override {
    if (!namespace_.refusal().empty()) {
      GTEST_SKIP() << namespace_.refusal();
    }
    ASSERT_TRUE(
        NetworkNamespace::run_ip("link add br0 type bridge stp_state 1\n"
                                 "link add v0 type veth peer name w0\n"
                                 "link add v1 type veth peer name w1\n"
                                 "link set v0 master br0\n"
                                 "link set v1 master br0\n"));
    nothing_.settings.name = "br0";
  }

  NetworkNamespace namespace_;
  SwitchState nothing_;
  MakeSource make_ = [](EventLoop *loop) { return std::make_unique<LinuxBridgeSource>(loop, "br0"); };
};

TEST_F(LinuxBridges, AreReadOrNot) { strike_start(kMemory | kSystem, make_, nothing_); }

TEST_F(LinuxBridges, AreFollowedOrNot) {
  Told told(make_);
  ASSERT_EQ(told.state.ports.size(), 2U);
  uint32_t cost = 0;
  strike_change(&told,
                {[&cost] {
                   ++cost;
                   pass_ms(kSecondMs);  // the kernel does not notify of it
                   EXPECT_TRUE(NetworkNamespace::run_ip("link set v0 type bridge_slave cost " +
                                                        std::to_string(cost) + "\n"));
                 },
                 [&cost](const SwitchState &state) {
                   return state.ports.contains(1) && state.ports.at(1).path_cost == cost;
                 }},
                nothing_);
}

// A root bridge with a port, as a server in another thread has it in its database.
class OpenVSwitches : public testing::Test {
 protected:
  OpenVSwitches() {
    server_thread_.run([this] {
      server_ = std::make_unique<FakeOvsdb>(&server_thread_.loop(), folder_.path("db.sock"));
      server_->schema = R"({"tables":{
          "Bridge":{"columns":{"name":{},"ports":{},"rstp_enable":{},"rstp_status":{}}},
          "Port":{"columns":{"name":{},"interfaces":{},"rstp_status":{}}}}})";
      server_->rows = rows("Root");
      server_->listen();
    });
  }
  ~OpenVSwitches() override {
    server_thread_.run([this] { server_.reset(); });
  }

  static std::string port_row(const std::string &role) {
    return R"("Port":{"p":{"new":{"name":"p1","interfaces":["uuid","i1"],
        "rstp_status":["map",[["rstp_port_id","8001"],["rstp_port_role",")" +
           role + R"("]]]}}})";
  }

  static std::string rows(const std::string &role) {
    return R"({"Bridge":{"b":{"new":{"name":"br0","ports":["uuid","p"],"rstp_enable":true,
        "rstp_status":["map",[["rstp_bridge_id","8.000.00005e005301"]]]}}},)" +
           port_row(role) + "}";
  }

  // Two turns of the server's loop: the first may have begun already.
  void synchronize() {
    server_thread_.run([] {});
    server_thread_.run([] {});
  }

  void change_role(const std::string &role) {
    server_thread_.run([&] {
      server_->rows = rows(role);
      server_->send(R"({"id":null,"method":"update","params":["stp-switchd",{)" + port_row(role) + "}]}");
    });
  }

  TemporaryFolder folder_;
  LoopThread server_thread_;
  std::unique_ptr<FakeOvsdb> server_;  // the thread's
  MakeSource make_ = [this](EventLoop *loop) {
    const OpenVSwitchTimes times{
        .first_rows = 30s,
        .database = {.silence = 60s, .patience = 60s, .first_retry = 10ms, .last_retry = 20ms},
        .daemon = {.between_looks = 10ms, .settling = 10ms, .leniency = 60s}};
    return std::make_unique<OpenVSwitchSource>(loop, folder_.path("db.sock"),
                                               std::vector<WatchedBridge>{{"br0", {}}}, times);
  };
  SwitchState nothing_ = unknown_state({{"br0", {}}});
};

TEST_F(OpenVSwitches, AreReadOrNot) {
  strike_start(kSystem, make_, nothing_, [this] { synchronize(); });
  strike_start_at_end_of_memory(make_);
}

TEST_F(OpenVSwitches, AreFollowedOrNot) {
  Told told(make_);
  ASSERT_TRUE(run_until(told.loop, [&told] { return told.state.ports.size() == 1; }));
  bool is_root = true;
  strike_change(&told,
                {[this, &is_root] {
                   is_root = !is_root;
                   change_role(is_root ? "Root" : "Alternate");
                 },
                 [&is_root](const SwitchState &state) {
                   return state.ports.contains(1) &&
                          state.ports.at(1).role.in(0) == (is_root ? PortRole::kRoot : PortRole::kAlternate);
                 }},
                nothing_);
}

}  // namespace
