// A listening local socket whose file exists as long as the listener does.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>

#include "wire/owned_fd.h"

namespace stpswitch {

// Or else the class has one layout here and another one where somebody has defined _FILE_OFFSET_BITS.
static_assert(sizeof(ino_t) == sizeof(uint64_t) && sizeof(off_t) == sizeof(uint64_t),
              "every source file is compiled with _FILE_OFFSET_BITS=64");

struct UnixSocketOptions {
  std::string path;
  int type;                    // SOCK_STREAM or SOCK_SEQPACKET
  mode_t mode;                 // of the socket's file
  std::optional<gid_t> group;  // of the socket's file
};

class UnixListener {
 public:
  // Replaces the file of a socket that nobody listens to any more. Throws std::runtime_error, also when
  // somebody does.
  explicit UnixListener(UnixSocketOptions options);
  ~UnixListener();
  UnixListener(const UnixListener &) = delete;
  UnixListener &operator=(const UnixListener &) = delete;

  int fd() const { return fd_.get(); }
  const std::string &path() const { return options_.path; }

 private:
  void remove_stale_file() const;
  void bind_file();

  UnixSocketOptions options_;
  stpplatform::OwnedFd fd_;
  dev_t device_ = 0;
  ino_t inode_ = 0;
};

}  // namespace stpswitch
