#include "faults/faults.h"

namespace stpswitch {

void Faults::order(FaultKind kind, std::chrono::milliseconds delay, std::optional<uint32_t> count) {
  fault_ = {kind, delay, 0};
  left_ = count;
  tell();
}

Fault Faults::next() {
  if (left_ == 0U) {
    fault_ = {};
  } else if (left_) {
    --*left_;
  }
  const Fault fault = fault_;
  ++fault_.turn;
  if (left_ == 0U) {
    tell();
  }
  return fault;
}

void Faults::tell() const {
  if (listener_) {
    listener_(ordered().kind != FaultKind::kNone);
  }
}

}  // namespace stpswitch
