#include "model/switch.h"

#include <utility>

#include "model/derived.h"

namespace stpswitch {

Switch::Switch(SwitchState state) : state_(std::move(state)), config_digest_(mst_config_digest(state_)) {}

const MstDigest &Switch::pre_standard_digest() const {
  return state_.mst.pre_standard_digest ? *state_.mst.pre_standard_digest : config_digest_;
}

void Switch::replace(SwitchState state) {
  config_digest_ = mst_config_digest(state);
  state_ = std::move(state);
  if (listener_) {
    listener_();
  }
}

}  // namespace stpswitch
