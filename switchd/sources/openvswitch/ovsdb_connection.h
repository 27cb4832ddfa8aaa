// A connection to OVSDB's server that monitors one database (RFC 7047), and comes back whenever it is lost.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/event_loop.h"
#include "sources/openvswitch/json_stream.h"
#include "sources/openvswitch/ovsdb_rows.h"
#include "wire/owned_fd.h"

namespace stpswitch {

struct OvsdbTimes {
  // After so long a silence the server is asked whether it is there, and has as long to say so.
  std::chrono::milliseconds silence{5'000};
  // From connecting to the first rows.
  std::chrono::milliseconds patience{10'000};
  // Before the first of a row of attempts to connect; each later one waits twice as long, to the last.
  std::chrono::milliseconds first_retry{250};
  std::chrono::milliseconds last_retry{4'000};
};

// Called on the loop, or from wait_for_rows. Both that take an update may throw Refusal: the connection is
// lost then, and everything read anew.
struct OvsdbEvents {
  std::function<void(const nlohmann::json &table_updates)> monitored;  // all rows
  std::function<void(const nlohmann::json &table_updates)> updated;
  std::function<void(const std::string &why)> lost;  // also for each attempt to connect that fails
};

class OvsdbConnection {
 public:
  OvsdbConnection(EventLoop *loop, std::string socket, const OvsdbTimes &times, OvsdbEvents events);
  OvsdbConnection(const OvsdbConnection &) = delete;
  OvsdbConnection &operator=(const OvsdbConnection &) = delete;

  // Connects, and does so again whenever the connection is lost.
  void start();

  // Serves this connection alone until it has the rows or is lost, at most so long.
  void wait_for_rows(std::chrono::milliseconds time);

 private:
  void connect();
  void lose(const std::string &why);
  // Loses the connection when the work throws Refusal.
  void unless_refused(const std::function<void()> &work);

  void read_messages();
  void read_octets();
  void take(const std::string &text);
  void answer_echo(const nlohmann::json &request);
  void take_reply(const nlohmann::json &reply);
  void monitor(const nlohmann::json &schema);
  void send(const nlohmann::json &message);
  void send_waiting();
  void send_octets();
  void ask_after_silence();
  void end_patience();

  std::string socket_;
  OvsdbTimes times_;
  OvsdbEvents events_;
  EventLoop &loop_;

  stpplatform::OwnedFd fd_;  // open as long as it is connected
  JsonStream stream_;
  std::vector<char> buffer_;
  std::string unsent_;
  bool is_asked_ = false;  // whether it is there
  bool has_rows_ = false;
  std::chrono::steady_clock::time_point connected_;
  std::chrono::milliseconds next_retry_;

  Event readable_;
  Event writable_;
  Event silence_;
  Event patience_;
  Event retry_;
};

}  // namespace stpswitch
