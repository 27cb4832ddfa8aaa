// A storm of events from the switch's own server to the library's code, with requests in between.
#include <arpa/inet.h>
#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <gtest/gtest.h>
#include <net-snmp/library/snmp_alarm.h>
#include <sys/socket.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "comes_true.h"
#include "connection.h"
#include "event_subscription.h"
#include "main_loop.h"
#include "platform/agent_ext.h"
#include "platform/cmd.h"
#include "platform/xport.h"
#include "protocol_numbers.h"
#include "server/command_server.h"
#include "settings.h"
#include "support/temporary_folder.h"

namespace {

constexpr uint32_t kTrees = 40;
constexpr uint32_t kEvents = 10000;
constexpr size_t kEventsPerBatch = 100;

// The number of each tree's latest event, and how many events there were. The mode carries the number: it is
// the one field that nobody looks at on the way.
std::map<uint32_t, uint32_t> latest;
uint32_t delivered = 0;
bool in_order = true;

netsnmp_variable_list *handle(void *message, oid *, size_t *, int *status) {
  stp_inconsistency_payload payload;
  std::memcpy(&payload, xport_payload_get(message), sizeof payload);
  uint32_t &number = latest[ntohl(payload.tree)];
  in_order = in_order && number < ntohl(payload.mode);
  number = ntohl(payload.mode);
  ++delivered;
  *status = 0;
  return nullptr;
}

// The command server in a thread of its own, which does what it is told between two turns of its loop.
class ServedSwitch {
 public:
  explicit ServedSwitch(const std::string &path) : path_(path), thread_([this] { serve(); }) {
    while (!is_up_) {
      std::this_thread::yield();
    }
  }

  ~ServedSwitch() {
    is_over_ = true;
    thread_.join();
  }

  ServedSwitch(const ServedSwitch &) = delete;
  ServedSwitch &operator=(const ServedSwitch &) = delete;

  // Sends the storm: the numbers of each tree only ever grow.
  void start_storm() { is_storming_ = true; }
  bool storm_is_over() const { return told_ == kEvents; }

 private:
  void serve() {
    stpswitch::EventLoop loop;
    stpswitch::Switch the_switch{stpswitch::SwitchState{}};
    stpswitch::ImagePublisher publisher(&the_switch);
    stpswitch::Faults faults;
    stpswitch::CommandServer server(&loop, {path_, SOCK_SEQPACKET, 0660, std::nullopt}, &publisher, &faults);
    is_up_ = true;
    while (!is_over_) {
      event_base_loop(loop.base(), EVLOOP_NONBLOCK);
      if (is_storming_ && told_ < kEvents) {
        tell_batch(&server);
      }
    }
  }

  void tell_batch(stpswitch::CommandServer *server) {
    std::vector<stpswitch::SwitchEvent> events;
    uint32_t told = told_;
    while (events.size() < kEventsPerBatch) {
      ++told;
      events.push_back(stpswitch::InconsistencyEvent{stpswitch::InconsistencyEventKind::kLoop, told % kTrees,
                                                     1, 1, static_cast<stpswitch::SpanningTreeMode>(told)});
    }
    server->tell(events);
    told_ = told;
  }

  std::string path_;
  std::atomic<bool> is_up_{false};
  std::atomic<bool> is_over_{false};
  std::atomic<bool> is_storming_{false};
  std::atomic<uint32_t> told_{0};
  std::thread thread_;
};

class EventStorms : public testing::Test {
 protected:
  EventStorms() {
    setenv("STPPLATFORM_SOCKET", path_.c_str(), 1);
    setenv("STPPLATFORM_DEADLINE_MS", "30000", 1);
    stpplatform::read_settings();
    latest.clear();
    delivered = 0;
    in_order = true;
  }

  ~EventStorms() override {
    unregister_for_notification(protocol::kLoopInconsistencyClass);
    stpplatform::connection().reset();
    unsetenv("STPPLATFORM_SOCKET");
    unsetenv("STPPLATFORM_DEADLINE_MS");
    stpplatform::read_settings();
  }

  // One round, alarms included.
  static void turn_main_loop() {
    run_main_loop_once();
    run_alarms();
  }

  static bool run_main_loop_until(const std::function<bool()> &condition) {
    return comes_true(condition, turn_main_loop);
  }

  // Any answer will do.
  static int ask() {
    alignas(max_align_t) uint8_t buffer[512];
    void *request = cmd_req_init(buffer, sizeof buffer);
    cmd_req_cmdId_set(request, 112);
    cmd_req_action_set(request, CMD_ACTION_GET);
    void *reply = nullptr;
    const int result =
        cmd_snmp_req_send_recv(protocol::kDestination, protocol::kService, request, "", 1, &reply, 0);
    cmd_snmp_free_rx_hndl(reply);
    return result;
  }

  // The last state that was told of each tree has been delivered.
  static bool final_states_have_come() {
    for (uint32_t told = kEvents - kTrees + 1; told <= kEvents; ++told) {
      if (latest[told % kTrees] != told) {
        return false;
      }
    }
    return true;
  }

  // Subscribes, and sees to it that the switch has taken notice.
  void subscribe() {
    ASSERT_EQ(register_for_notification(protocol::kLoopInconsistencyClass, handle), 0);
    ASSERT_EQ(set_notification_enable_disable_status(protocol::kLoopInconsistencyClass, 1), 0);
    // An alarm is pending until the hello has come and the subscription is sent.
    ASSERT_TRUE(run_main_loop_until([] { return sa_find_next() == nullptr; }));
    // The turn of the switch's loop that answers the first request takes the subscription, too; the second
    // one is answered in a later turn.
    ASSERT_EQ(ask(), CMD_OK);
    ASSERT_EQ(ask(), CMD_OK);
  }

  TemporaryFolder folder_;
  std::string path_ = folder_.path("switch.sock");
  ServedSwitch switch_{path_};
};

TEST_F(EventStorms, RequestsGetTheirTurnInAStorm) {
  subscribe();
  switch_.start_storm();
  uint32_t rounds = 0;
  ASSERT_TRUE(run_main_loop_until([&] {
    const uint32_t before = delivered;
    turn_main_loop();
    EXPECT_LE(delivered - before, static_cast<uint32_t>(stpplatform::EventSubscription::kEventsPerWakeup));
    EXPECT_EQ(ask(), CMD_OK);
    ++rounds;
    return final_states_have_come() || testing::Test::HasFailure();
  }));
  EXPECT_TRUE(in_order);
  EXPECT_LE(delivered, kEvents);
  EXPECT_GT(rounds, 0U);
}

TEST_F(EventStorms, AnAgentThatHasSleptThroughAStormLearnsHowItEnded) {
  subscribe();
  switch_.start_storm();
  while (!switch_.storm_is_over()) {
    ASSERT_EQ(ask(), CMD_OK) << "requests do not wait for events";
  }
  EXPECT_EQ(delivered, 0U);
  ASSERT_TRUE(run_main_loop_until([] { return final_states_have_come(); }));
  EXPECT_TRUE(in_order);
  EXPECT_LT(delivered, kEvents) << "most were replaced";
  const uint32_t so_far = delivered;
  turn_main_loop();
  EXPECT_EQ(ask(), CMD_OK);
  EXPECT_EQ(delivered, so_far) << "nothing comes twice";
}

}  // namespace
