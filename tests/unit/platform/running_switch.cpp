#include "running_switch.h"

#include <cstdlib>
#include <thread>

#include "connection.h"
#include "settings.h"

RunningSwitchTest::RunningSwitchTest(const std::string &scenario)
    : switch_(STP_SWITCHD, {"--scenario", folder_.write("scenario.toml", scenario), "--socket", socket_,
                            "--control", control_}) {
  while (!switch_.has_ended() && switch_.errors().find(": ready: ") == std::string::npos) {
    std::this_thread::yield();
  }
  setenv("STPPLATFORM_SOCKET", socket_.c_str(), 1);
  setenv("STPPLATFORM_DEADLINE_MS", "30000", 1);
  stpplatform::read_settings();
}

RunningSwitchTest::~RunningSwitchTest() {
  stpplatform::connection().reset();
  unsetenv("STPPLATFORM_SOCKET");
  unsetenv("STPPLATFORM_DEADLINE_MS");
  stpplatform::read_settings();
}

std::string RunningSwitchTest::set(const std::string &key, const std::string &value) const {
  return run_program(STP_SWITCHCTL, {"--control", control_, "set", key, value}).errors;
}
