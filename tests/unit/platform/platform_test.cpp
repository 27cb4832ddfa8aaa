#include "platform_test.h"

#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <net-snmp/library/fd_event_manager.h>
#include <net-snmp/library/snmp_alarm.h>

#include <cstdlib>
#include <cstring>
#include <thread>

#include "comes_true.h"
#include "connection.h"
#include "platform/cmd.h"
#include "protocol_numbers.h"
#include "settings.h"

namespace {

std::vector<std::string> log_lines;

int on_log(int, int, void *message, void *) {
  log_lines.emplace_back(static_cast<snmp_log_message *>(message)->msg);
  return 0;
}

}  // namespace

void set_environment(const char *variable, const std::optional<std::string> &value) {
  if (value) {
    setenv(variable, value->c_str(), 1);
  } else {
    unsetenv(variable);
  }
  stpplatform::read_settings();
}

LogCapture::LogCapture() {
  log_lines.clear();
  snmp_disable_stderrlog();
  snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_LOGGING, on_log, nullptr);
  snmp_enable_calllog();
}

LogCapture::~LogCapture() {
  snmp_disable_calllog();
  snmp_unregister_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_LOGGING, on_log, nullptr, 1);
}

std::vector<std::string> LogCapture::take() { return std::exchange(log_lines, {}); }

int watched_descriptors() { return external_readfdlen; }

bool has_alarm() { return sa_find_next() != nullptr; }

std::optional<uint64_t> ring_next_alarm() {
  constexpr uint64_t kMsPerSecond = 1000;
  constexpr uint64_t kUsPerMs = 1000;
  snmp_alarm *alarm = sa_find_next();
  if (alarm == nullptr) {
    return std::nullopt;
  }
  const uint64_t ms = static_cast<uint64_t>(alarm->t.tv_sec) * kMsPerSecond +
                      static_cast<uint64_t>(alarm->t.tv_usec) / kUsPerMs;
  alarm->t_nextM = {0, 1};
  run_alarms();
  return ms;
}

bool run_main_loop_until(const std::function<bool()> &condition) {
  return comes_true(condition, [] {
    if (run_main_loop_once() == 0) {
      std::this_thread::yield();
    }
  });
}

int ask(uint32_t command, uint32_t *echo) {
  alignas(max_align_t) uint8_t buffer[512];
  void *request = cmd_req_init(buffer, sizeof buffer);
  cmd_req_cmdId_set(request, command);
  cmd_req_action_set(request, CMD_ACTION_GET);
  void *reply = nullptr;
  const int result =
      cmd_snmp_req_send_recv(protocol::kDestination, protocol::kService, request, "operator", 1, &reply, 0);
  EXPECT_EQ(result == CMD_OK, reply != nullptr);
  void *value = nullptr;
  uint32_t length = 0;
  if (echo != nullptr && cmd_rsp_attr_get(reply, FakeSwitch::kEchoToken, &value, &length) == CMD_OK) {
    std::memcpy(echo, value, sizeof *echo);
  }
  cmd_snmp_free_rx_hndl(reply);
  return result;
}

PlatformTest::PlatformTest() {
  set_environment("STPPLATFORM_SOCKET", switch_.path());
  set_deadline_ms(kPatientMs);
  stpplatform::connection().reset();
  LogCapture::take();
}

PlatformTest::~PlatformTest() {
  stpplatform::connection().reset();
  set_environment("STPPLATFORM_SOCKET", std::nullopt);
  set_environment("STPPLATFORM_DEADLINE_MS", std::nullopt);
}

void PlatformTest::set_deadline_ms(uint32_t ms) {
  set_environment("STPPLATFORM_DEADLINE_MS", std::to_string(ms));
}

testing::AssertionResult PlatformTest::switch_answers() {
  static uint32_t command = 0;
  ++command;
  uint32_t echo = 0;
  const int result = ask(command, &echo);
  if (result != CMD_OK) {
    return testing::AssertionFailure() << "result " << result;
  }
  if (echo != command) {
    return testing::AssertionFailure() << "answer " << echo << " to " << command;
  }
  return testing::AssertionSuccess();
}
