#include "sources/openvswitch/vswitchd_watch.h"

#include <fcntl.h>

#include <filesystem>
#include <utility>

#include "wire/owned_fd.h"

namespace stpswitch {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char *kHasEnded = "has ended";
constexpr const char *kIsSilent = "shows no sign of life";
constexpr const char *kIsAwaited = "has yet to show a sign of life";

}  // namespace

VswitchdWatch::VswitchdWatch(EventLoop *loop, std::string pid_file, const WatchTimes &times,
                             std::function<void()> changed)
    : pid_file_(std::move(pid_file)),
      times_(times),
      changed_(std::move(changed)),
      look_again_(loop->make_event<&VswitchdWatch::look>(-1, 0, this)),
      settled_(loop->make_event<&VswitchdWatch::settle>(-1, 0, this)) {}

void VswitchdWatch::begin(std::chrono::milliseconds interval) {
  end();
  interval_ = interval;
  last_sign_ = Clock::now();
  see_whether_ended();
  runs_ = !has_ended_ && (look_at_file() == PidFile::kLocked || interval_.count() == 0);
  why_not_ = has_ended_ ? kHasEnded : kIsAwaited;
  wait_for(look_again_, times_.between_looks);
}

void VswitchdWatch::end() {
  forget(look_again_);
  forget(settled_);
  is_settling_ = false;
  runs_ = false;
}

void VswitchdWatch::note_sign(std::chrono::milliseconds interval) {
  interval_ = interval;
  last_sign_ = Clock::now();
  if (has_ended_) {
    see_whether_ended();
    if (has_ended_ && last_sign_ - ended_ > times_.leniency) {
      // The file is another one's.
      trusts_file_ = false;
      has_ended_ = false;
    }
  }
  if (!runs_ && !has_ended_ && !is_settling_) {
    is_settling_ = true;
    wait_for(settled_, times_.settling);
  }
}

// It keeps the lock as long as it runs (fcntl(2)). To ask who has it takes no more than to read the file.
VswitchdWatch::PidFile VswitchdWatch::look_at_file() const {
  const stpplatform::OwnedFd file(::open(pid_file_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  if (!file.is_open() || ::fcntl(file.get(), F_GETLK, &lock) != 0) {
    return PidFile::kMissing;
  }
  return lock.l_type == F_UNLCK ? PidFile::kUnlocked : PidFile::kLocked;
}

void VswitchdWatch::see_whether_ended() {
  const PidFile file = look_at_file();
  if (file == PidFile::kLocked) {
    has_seen_file_ = true;
    trusts_file_ = true;
  }
  const bool had_ended = has_ended_;
  has_ended_ = trusts_file_ && (file == PidFile::kUnlocked || (file == PidFile::kMissing && has_seen_file_));
  if (has_ended_ && !had_ended) {
    ended_ = Clock::now();
  }
}

void VswitchdWatch::look() {
  wait_for(look_again_, times_.between_looks);
  const bool had_ended = has_ended_;
  see_whether_ended();
  if (has_ended_) {
    set_gone(kHasEnded);
  } else if (had_ended && interval_.count() == 0) {
    // No other sign is going to come.
    note_sign(interval_);
  } else if (interval_.count() != 0 && Clock::now() - last_sign_ > 2 * interval_ + times_.leniency) {
    set_gone(kIsSilent);
  }
}

void VswitchdWatch::settle() {
  is_settling_ = false;
  runs_ = true;
  changed_();
}

void VswitchdWatch::set_gone(const std::string &why) {
  forget(settled_);
  is_settling_ = false;
  if (runs_ || why_not_ != why) {
    runs_ = false;
    why_not_ = why;
    changed_();
  }
}

std::string pid_file_beside(const std::string &socket) {
  return std::filesystem::path(socket).replace_filename("ovs-vswitchd.pid");
}

}  // namespace stpswitch
