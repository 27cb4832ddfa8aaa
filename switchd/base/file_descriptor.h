// Owner of one file descriptor, and the error that a failed system call becomes.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace stpswitch {

class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int fd) : fd_(fd) {}
  FileDescriptor(FileDescriptor &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  FileDescriptor &operator=(FileDescriptor &&other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  FileDescriptor(const FileDescriptor &) = delete;
  FileDescriptor &operator=(const FileDescriptor &) = delete;
  ~FileDescriptor() {
    if (fd_ >= 0) {
      ::close(fd_);
    }
  }

  int get() const { return fd_; }
  int release() { return std::exchange(fd_, -1); }
  bool is_open() const { return fd_ >= 0; }

 private:
  int fd_ = -1;
};

// What went wrong, with errno's reason: "cannot listen: Permission denied".
inline std::runtime_error system_failure(const std::string &what) {
  const int reason = errno;
  return std::runtime_error(what + ": " + std::generic_category().message(reason));
}

}  // namespace stpswitch
