#include "lab.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <utility>

#include "agent.h"
#include "connection.h"
#include "main_loop.h"
#include "passing_time.h"
#include "settings.h"
#include "stp_bridge_mib.h"
#include "stpsnmp/stp_extensions_mib.h"

namespace {

// Longer than a switch is ever left alone, and than the bridge module waits for one.
constexpr uint64_t kLongMs = 11'000;

// Only a hang lasts so long.
constexpr char kDeadlineMs[] = "60000";

constexpr int kBothConnections = 2;

// Every switch has it.
constexpr char kMaxHopCount[] = "S.1.14.8.0";

bool has_no_input() { return run_main_loop_once() == 0; }

// A request makes the connection that requests use.
bool stands() {
  return has_no_input() && agent::get({kMaxHopCount}) != agent::kNothing &&
         agent::watched_descriptors() == kBothConnections && !agent::has_alarm();
}

}  // namespace

Lab::Lab(stpswitch::SwitchState state, const std::string &context)
    : switch_(std::make_unique<ServedSwitch>(socket_)) {
  agent::prepare();
  setenv("STPPLATFORM_SOCKET", socket_.c_str(), 1);
  setenv("STPPLATFORM_DEADLINE_MS", kDeadlineMs, 1);
  stpplatform::read_settings();
  replace(std::move(state));
  init_stp_extensions_mib();
  init_stp_bridge_mib();
  EXPECT_TRUE(agent::run_until([&context] { return agent::has_context(context); }));
  settle();
}

Lab::~Lab() {
  deinit_stp_bridge_mib();
  deinit_stp_extensions_mib();
  stpplatform::connection().reset();
  unsetenv("STPPLATFORM_SOCKET");
  unsetenv("STPPLATFORM_DEADLINE_MS");
  stpplatform::read_settings();
}

void Lab::restart(stpswitch::SwitchState state) {
  switch_.reset();
  switch_ = std::make_unique<ServedSwitch>(socket_);
  replace(std::move(state));
}

void Lab::synchronize() {
  // A turn of its loop that begins now, and one that knows what time it is.
  image_size();
  image_size();
}

void Lab::pass_backoff() { pass_ms(kLongMs); }

void Lab::settle() {
  EXPECT_TRUE(agent::run_until(has_no_input));
  pass_backoff();
  EXPECT_TRUE(agent::run_until(stands));
  synchronize();
  EXPECT_TRUE(agent::run_until(stands));
}
