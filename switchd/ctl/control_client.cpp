#include "ctl/control_client.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>

#include "control/control_protocol.h"
#include "wire/owned_fd.h"

namespace stpswitch {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{5};
constexpr size_t kReadSize = 65536;

// A connection whose every step ends by one deadline.
class Connection {
 public:
  explicit Connection(const std::string &path)
      : path_(path),
        deadline_(Clock::now() + kPatience),
        fd_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    sockaddr_un address{};
    if (path.size() >= sizeof address.sun_path) {
      throw Unreachable(path + ": the path is too long for a socket");
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    if (::connect(fd_.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
      const bool nobody_listens = errno == ENOENT || errno == ECONNREFUSED;
      throw Unreachable(path + ": " + std::strerror(errno) +
                        (nobody_listens ? " (does stp-switchd run?)" : ""));
    }
  }

  void send_line(const std::string &text) {
    const std::string line = text + "\n";
    for (size_t sent = 0; sent < line.size();) {
      const ssize_t done = ::send(fd_.get(), line.data() + sent, line.size() - sent, MSG_NOSIGNAL);
      if (done < 0) {
        wait_or_fail(POLLOUT);
      } else {
        sent += static_cast<size_t>(done);
      }
    }
  }

  std::string read_line() {
    std::string text;
    std::array<char, kReadSize> block{};
    while (text.empty() || text.back() != '\n') {
      const ssize_t got = ::recv(fd_.get(), block.data(), block.size(), 0);
      if (got == 0) {
        throw Unreachable(path_ + ": the switch closed the connection");
      }
      if (got < 0) {
        wait_or_fail(POLLIN);
      } else {
        text.append(block.data(), static_cast<size_t>(got));
      }
    }
    return text;
  }

 private:
  [[noreturn]] void fail_with_errno() const { throw Unreachable(path_ + ": " + std::strerror(errno)); }

  // After a call that failed: waits until it is worth another try.
  void wait_or_fail(short events) const {
    if (errno != EAGAIN && errno != EINTR) {
      fail_with_errno();
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - Clock::now());
    pollfd waiting{fd_.get(), events, 0};
    if (left.count() <= 0 || ::poll(&waiting, 1, static_cast<int>(left.count())) == 0) {
      throw Unreachable(path_ + ": the switch does not answer");
    }
  }

  std::string path_;
  Clock::time_point deadline_;
  stpplatform::OwnedFd fd_;
};

std::string text_of(const nlohmann::json &request) {
  try {
    return request.dump();
  } catch (const nlohmann::json::type_error &) {
    throw std::invalid_argument("the key or the value is not UTF-8");
  }
}

}  // namespace

nlohmann::json ask_switch(const std::string &control_path, const nlohmann::json &request) {
  Connection connection(control_path);
  connection.send_line(text_of(request));
  auto answer = nlohmann::json::parse(connection.read_line(), nullptr, false);
  if (!answer.is_object() || !answer.contains(control::kOk) || !answer[control::kOk].is_boolean()) {
    throw Unreachable(control_path + ": whoever answers there is not stp-switchd");
  }
  return answer;
}

}  // namespace stpswitch
