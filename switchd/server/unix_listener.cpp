#include "server/unix_listener.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <thread>

#include "base/system_failure.h"

namespace stpswitch {
namespace {

constexpr int kBacklog = 64;
constexpr mode_t kAllPermissions = 0777;

// Others of this program are done with the socket's directory in a moment. Whoever holds it longer is
// somebody else, whose end nobody knows.
constexpr std::chrono::seconds kLockPatience{2};
constexpr std::chrono::milliseconds kLockInterval{20};

sockaddr_un address_of(const std::string &path) {
  sockaddr_un address{};
  if (path.empty()) {
    throw std::runtime_error("the path of a socket is empty");
  }
  if (path.size() >= sizeof address.sun_path) {
    throw std::runtime_error(path + ": a socket's path cannot be longer than " +
                             std::to_string(sizeof address.sun_path - 1) + " octets");
  }
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), path.size());
  return address;
}

stpplatform::OwnedFd open_socket(int type) {
  stpplatform::OwnedFd fd(::socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!fd.is_open()) {
    throw system_failure("cannot open a socket");
  }
  return fd;
}

const sockaddr *generic(const sockaddr_un &address) { return reinterpret_cast<const sockaddr *>(&address); }

// Files that are created meanwhile get these permissions.
class CreationMode {
 public:
  explicit CreationMode(mode_t mode) : old_mask_(::umask(kAllPermissions & ~mode)) {}
  ~CreationMode() { ::umask(old_mask_); }
  CreationMode(const CreationMode &) = delete;
  CreationMode &operator=(const CreationMode &) = delete;

 private:
  mode_t old_mask_;
};

// Returns with errno EWOULDBLOCK when somebody else has kept the lock all the time.
bool try_to_lock(int fd) {
  const auto give_up = std::chrono::steady_clock::now() + kLockPatience;
  while (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= give_up) {
      return false;
    }
    std::this_thread::sleep_for(kLockInterval);
  }
  return true;
}

// Keeps others of this program from replacing the same socket at the same time. Gone with the descriptor.
stpplatform::OwnedFd lock_directory_of(const std::string &path) {
  const std::filesystem::path parent = std::filesystem::path(path).parent_path();
  const std::string directory = parent.empty() ? "." : parent.string();
  stpplatform::OwnedFd lock(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!lock.is_open()) {
    throw system_failure(path + ": the socket's directory " + directory + " cannot be opened");
  }
  if (!try_to_lock(lock.get())) {
    if (errno == EWOULDBLOCK) {
      throw std::runtime_error(path + ": the socket's directory " + directory +
                               " is locked by another process");
    }
    throw system_failure(path + ": the socket's directory " + directory + " cannot be locked");
  }
  return lock;
}

}  // namespace

UnixListener::UnixListener(UnixSocketOptions options)
    : options_(std::move(options)), fd_(open_socket(options_.type)) {
  const stpplatform::OwnedFd lock = lock_directory_of(options_.path);
  remove_stale_file();
  bind_file();
}

UnixListener::~UnixListener() {
  struct stat file {};
  if (::lstat(path().c_str(), &file) == 0 && file.st_dev == device_ && file.st_ino == inode_) {
    ::unlink(path().c_str());
  }
}

void UnixListener::remove_stale_file() const {
  struct stat file {};
  if (::lstat(path().c_str(), &file) != 0) {
    if (errno == ENOENT) {
      return;
    }
    throw system_failure(path());
  }
  if (!S_ISSOCK(file.st_mode)) {
    throw std::runtime_error(path() + " exists and is not a socket");
  }
  const sockaddr_un address = address_of(path());
  const stpplatform::OwnedFd probe = open_socket(options_.type);
  if (::connect(probe.get(), generic(address), sizeof address) == 0 || errno != ECONNREFUSED) {
    throw std::runtime_error(path() + " is in use");
  }
  if (::unlink(path().c_str()) != 0) {
    throw system_failure(path() + ": the socket of a process that is gone cannot be removed");
  }
}

void UnixListener::bind_file() {
  const sockaddr_un address = address_of(path());
  {
    const CreationMode creation_mode(options_.mode);
    if (::bind(fd_.get(), generic(address), sizeof address) != 0) {
      throw system_failure(path() + ": the socket cannot be created");
    }
  }
  try {
    struct stat file {};
    if (::lstat(path().c_str(), &file) != 0) {
      throw system_failure(path());
    }
    if (options_.group && ::lchown(path().c_str(), static_cast<uid_t>(-1), *options_.group) != 0) {
      throw system_failure(path() + ": the socket's group cannot be set");
    }
    if (::listen(fd_.get(), kBacklog) != 0) {
      throw system_failure(path() + ": cannot listen");
    }
    device_ = file.st_dev;
    inode_ = file.st_ino;
  } catch (...) {
    ::unlink(path().c_str());
    throw;
  }
}

}  // namespace stpswitch
