// Sees this program's flock refuse a lock that somebody else has.
#pragma once

#include <functional>

class RefusedLock {
 public:
  // Calls `when_refused` at the first refusal, before the caller learns of it.
  explicit RefusedLock(std::function<void()> when_refused);
  ~RefusedLock();
  RefusedLock(const RefusedLock &) = delete;
  RefusedLock &operator=(const RefusedLock &) = delete;

  // One more lock was refused.
  void refuse();

  // How many were.
  int refusals() const { return refusals_; }

 private:
  std::function<void()> when_refused_;
  int refusals_ = 0;
};
