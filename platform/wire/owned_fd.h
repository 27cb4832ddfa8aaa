// A file descriptor with one owner.
#pragma once

#include <unistd.h>

namespace stpplatform {

class OwnedFd {
 public:
  constexpr OwnedFd() = default;
  constexpr explicit OwnedFd(int fd) : fd_(fd) {}
  OwnedFd(OwnedFd &&other) noexcept : fd_(other.release()) {}
  OwnedFd &operator=(OwnedFd &&other) noexcept {
    if (this != &other) {
      reset(other.release());
    }
    return *this;
  }
  OwnedFd(const OwnedFd &) = delete;
  OwnedFd &operator=(const OwnedFd &) = delete;
  ~OwnedFd() { reset(); }

  int get() const { return fd_; }
  bool is_open() const { return fd_ >= 0; }

  int release() {
    const int fd = fd_;
    fd_ = -1;
    return fd;
  }

  void reset(int fd = -1) {
    if (fd_ >= 0) {
      close(fd_);
    }
    fd_ = fd;
  }

 private:
  int fd_ = -1;
};

}  // namespace stpplatform
