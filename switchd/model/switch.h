// The running switch: its state, what is computed from it once a change, and who is told of changes.
#pragma once

#include <functional>

#include "model/switch_state.h"

namespace stpswitch {

class Switch {
 public:
  explicit Switch(SwitchState state);

  const SwitchState &state() const { return state_; }
  const MstDigest &config_digest() const { return config_digest_; }
  const MstDigest &pre_standard_digest() const;

  // Called after each change; there is one listener.
  void on_change(std::function<void()> listener) { listener_ = std::move(listener); }

  // Takes over a state that has been checked.
  void replace(SwitchState state);

 private:
  SwitchState state_;
  MstDigest config_digest_;
  std::function<void()> listener_;
};

}  // namespace stpswitch
