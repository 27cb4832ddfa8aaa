// What the tests of the platform library share: the library's environment, the agent's log, one request.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "fake_clock.h"
#include "fake_switch.h"
#include "main_loop.h"
#include "open_descriptors.h"

// Long enough that only a hang reaches it.
inline constexpr uint32_t kPatientMs = 30000;
// For those that wait for it to pass.
inline constexpr uint32_t kShortMs = 30;

// Sets a variable of the environment, or unsets it, and makes the library read its settings anew.
void set_environment(const char *variable, const std::optional<std::string> &value);

// Catches what is written to the agent's log.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture &) = delete;
  LogCapture &operator=(const LogCapture &) = delete;

  static std::vector<std::string> take();
};

// Lets the agent's next alarm ring now, and tells how many milliseconds it was meant to wait. Nothing when
// there is none.
std::optional<uint64_t> ring_next_alarm();

// Whether the agent has an alarm to ring.
bool has_alarm();

// Runs the main loop until something holds. False when that takes so long that something must hang.
bool run_main_loop_until(const std::function<bool()> &condition);

// How many descriptors the agent's main loop watches.
int watched_descriptors();

// Sends command `command` and returns its result; on success, `*echo` is set to the reply's number.
int ask(uint32_t command, uint32_t *echo = nullptr);

// A switch, and the library set up for it. Time stands still.
class PlatformTest : public testing::Test {
 protected:
  PlatformTest();
  ~PlatformTest() override;

  static void set_deadline_ms(uint32_t ms);

  // Longer than any switch is left alone.
  void wait_for_backoff() { clock_.pass_ms(10000); }

  // True when the switch can be asked, and answers what was asked.
  static testing::AssertionResult switch_answers();

  LogCapture log_;
  StoppedClock clock_;
  FakeSwitch switch_;
};
