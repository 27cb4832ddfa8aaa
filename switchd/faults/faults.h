// Faults that the switch commits on demand in answering commands, so that those who ask it can be tested.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

namespace stpswitch {

enum class FaultKind { kNone, kDelay, kDrop, kGarbage, kDisconnect };

struct Fault {
  FaultKind kind = FaultKind::kNone;
  std::chrono::milliseconds delay{};  // kDelay: how late the reply is
  unsigned turn = 0;                  // kGarbage: counts the spoilt replies
};

class Faults {
 public:
  // Told whether a fault is ordered, each time that this may have changed; there is one listener.
  void on_change(std::function<void(bool is_ordered)> listener) { listener_ = std::move(listener); }

  // From now on, for the next `count` replies or for all; replaces what was ordered before.
  void order(FaultKind kind, std::chrono::milliseconds delay, std::optional<uint32_t> count);

  // What happens to the next reply.
  Fault next();

  // What would happen to it, and to how many in all; nothing: to all that come.
  Fault ordered() const { return left_ == 0U ? Fault{} : fault_; }
  std::optional<uint32_t> left() const { return left_ == 0U ? std::nullopt : left_; }

 private:
  void tell() const;

  Fault fault_;
  std::optional<uint32_t> left_;
  std::function<void(bool)> listener_;
};

}  // namespace stpswitch
