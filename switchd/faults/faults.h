// Faults that the switch commits on demand in answering commands, so that those who ask it can be tested.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace stpswitch {

enum class FaultKind { kNone, kDelay, kDrop, kGarbage, kDisconnect };

struct Fault {
  FaultKind kind = FaultKind::kNone;
  std::chrono::milliseconds delay{};  // kDelay: how late the reply is
  unsigned turn = 0;                  // kGarbage: counts the spoilt replies
};

class Faults {
 public:
  // From now on, for the next `count` replies or for all; replaces what was ordered before.
  void order(FaultKind kind, std::chrono::milliseconds delay, std::optional<uint32_t> count);

  // What happens to the next reply.
  Fault next();

  // What would happen to it, and to how many in all; nothing: to all that come.
  Fault ordered() const { return left_ == 0U ? Fault{} : fault_; }
  std::optional<uint32_t> left() const { return left_ == 0U ? std::nullopt : left_; }

 private:
  Fault fault_;
  std::optional<uint32_t> left_;
};

}  // namespace stpswitch
