// A switch in a thread of its own, and an agent with both modules that asks it.
#pragma once

#include <memory>
#include <string>

#include "model/switch_state.h"
#include "served_switch.h"
#include "support/temporary_folder.h"

class Lab {
 public:
  // The modules' objects in their contexts are there when it returns, `context` the last of them.
  Lab(stpswitch::SwitchState state, const std::string &context);
  ~Lab();
  Lab(const Lab &) = delete;
  Lab &operator=(const Lab &) = delete;

  void replace(stpswitch::SwitchState state) { switch_->replace(std::move(state)); }

  // Whether the switch wants to be asked by socket.
  void ask_me(bool wanted) { switch_->ask_me(wanted); }

  // The switch ends, and begins again as another one.
  void restart(stpswitch::SwitchState state);

  // What a client that connects now maps.
  uint32_t image_size() { return switch_->image_size(); }

  // The switch has taken what was sent to it before, and done what was due.
  void synchronize();

  // From now on a switch that was left alone is tried again.
  static void pass_backoff();

  // Lets so much time pass that nobody waits for anything any more; both connections stand, and nothing is on
  // its way.
  void settle();

 private:
  TemporaryFolder folder_;
  std::string socket_ = folder_.path("switch.sock");
  std::unique_ptr<ServedSwitch> switch_;
};
