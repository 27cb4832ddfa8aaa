// Makes this program's accept4 fail, as it does when no file descriptor is left.
#pragma once

class FailingAccept {
 public:
  FailingAccept();
  ~FailingAccept();
  FailingAccept(const FailingAccept &) = delete;
  FailingAccept &operator=(const FailingAccept &) = delete;
};
