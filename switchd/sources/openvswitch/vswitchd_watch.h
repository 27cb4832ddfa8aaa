// Tells whether ovs-vswitchd runs. What it has written into the database stays there when it ends, is killed
// or hangs, and nothing in the database says so: no column is cleared, none counts, and the one lock there
// must not be asked for, since whoever gets it keeps the next ovs-vswitchd from working. Two things do tell:
// it holds a lock on the file with its process identifier, next to the database's socket, and it writes the
// statistics of ports that run RSTP again and again.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "base/event_loop.h"

namespace stpswitch {

struct WatchTimes {
  std::chrono::milliseconds between_looks{1'000};
  // What is left of an earlier ovs-vswitchd is overwritten by then, after the first sign of a later one.
  std::chrono::milliseconds settling{500};
  // Added to the time in which two signs of life were due.
  std::chrono::milliseconds leniency{1'000};
};

class VswitchdWatch {
 public:
  // `changed` is called on the loop when runs() has become another.
  VswitchdWatch(EventLoop *loop, std::string pid_file, const WatchTimes &times,
                std::function<void()> changed);
  VswitchdWatch(const VswitchdWatch &) = delete;
  VswitchdWatch &operator=(const VswitchdWatch &) = delete;

  // Begins with rows just read from the database. `interval`: how often it is going to show a sign of life
  // there; 0 when nobody knows. Where the file tells nothing, it runs when it has shown one.
  void begin(std::chrono::milliseconds interval);

  // Until the next begin(): there is no database.
  void end();

  // It has written something into the database.
  void note_sign(std::chrono::milliseconds interval);
  // Others have.
  void note_interval(std::chrono::milliseconds interval) { interval_ = interval; }

  // What it has written is true.
  bool runs() const { return runs_; }

  // Why not: a sentence without subject and full stop.
  const std::string &why_not() const { return why_not_; }

 private:
  enum class PidFile { kLocked, kUnlocked, kMissing };

  PidFile look_at_file() const;
  void see_whether_ended();
  void look();
  void settle();
  void set_gone(const std::string &why);

  std::string pid_file_;
  WatchTimes times_;
  std::function<void()> changed_;
  bool has_seen_file_ = false;
  bool trusts_file_ = true;  // until there are signs of life all the same
  std::chrono::milliseconds interval_{0};
  std::chrono::steady_clock::time_point last_sign_;
  bool runs_ = false;
  bool has_ended_ = false;  // as the file tells
  std::chrono::steady_clock::time_point ended_;
  bool is_settling_ = false;
  std::string why_not_;
  Event look_again_;
  Event settled_;
};

// Of the ovs-vswitchd that serves the database behind a socket.
std::string pid_file_beside(const std::string &socket);

}  // namespace stpswitch
