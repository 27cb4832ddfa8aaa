// Makes this program's accept4 fail, as it does when no file descriptor is left.
#pragma once

#include <cstddef>

class FailingAccept {
 public:
  FailingAccept();
  ~FailingAccept();
  FailingAccept(const FailingAccept &) = delete;
  FailingAccept &operator=(const FailingAccept &) = delete;

  // One more call fails.
  int fail();

  // How many calls have failed.
  size_t failures() const { return failures_; }

 private:
  size_t failures_ = 0;
};
