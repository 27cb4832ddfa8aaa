// A source: where the state of the switch comes from. There is exactly one for each stp-switchd, chosen on
// the command line: a scenario, Linux bridges or Open vSwitch.
//
// A source owns its descriptors and events, and lives on the event loop's one thread. It tells whole states:
// the listener may be called only from the loop, never from within start(). A burst of changes is one state
// (burst.h). What it reads may be missing, vanish and return: that is a state in which nothing is known any
// more (Settings::mode unset), with one line in the log for the loss and one for the return, and never the
// end of the process. No state ever holds a value that what the source reads does not say at that time.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "model/switch_state.h"

namespace stpswitch {

class Source {
 public:
  using Listener = std::function<void(SwitchState)>;

  Source() = default;
  virtual ~Source() = default;
  Source(const Source &) = delete;
  Source &operator=(const Source &) = delete;

  // Begins, and returns the first state: what is there at this moment. Every later state goes to the
  // listener. Called once. Throws std::runtime_error, with what to do about it, when the source can never
  // work here.
  virtual SwitchState start(Listener listener) = 0;

  // The state `now` with one key (keys/keys.h) changed. Throws ConfigError for what the source does not let
  // anybody set, with where to set it instead.
  virtual SwitchState with_value(const SwitchState &now, const std::string &key,
                                 const std::string &value) const = 0;

  // The state that `with_value` led away from; none when nothing can be set.
  virtual std::optional<SwitchState> original() const = 0;
};

}  // namespace stpswitch
