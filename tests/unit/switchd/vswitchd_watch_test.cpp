// Whether ovs-vswitchd runs: told by the lock on a file, and by signs of life.
#include "sources/openvswitch/vswitchd_watch.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <optional>
#include <string>

#include "support/packet_client.h"
#include "support/temporary_folder.h"

using namespace stpswitch;
using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds kNever{0};
constexpr std::chrono::milliseconds kHourly{3'600'000};

// A process with a lock on a file.
class Locker {
 public:
  explicit Locker(const std::string &path) {
    std::array<int, 2> ready{};
    EXPECT_EQ(::pipe(ready.data()), 0);
    process_ = ::fork();
    if (process_ == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      struct flock lock {};
      lock.l_type = F_WRLCK;
      lock.l_whence = SEEK_SET;
      const int file = ::open(path.c_str(), O_RDWR | O_CREAT, 0644);
      const bool is_locked = ::fcntl(file, F_SETLK, &lock) == 0;
      if (::write(ready[1], &is_locked, sizeof is_locked) == sizeof is_locked) {
        ::pause();
      }
      ::_exit(1);
    }
    bool is_locked = false;
    EXPECT_EQ(::read(ready[0], &is_locked, sizeof is_locked), ssize_t{sizeof is_locked});
    EXPECT_TRUE(is_locked);
    ::close(ready[0]);
    ::close(ready[1]);
  }
  ~Locker() {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
  Locker(const Locker &) = delete;
  Locker &operator=(const Locker &) = delete;

 private:
  pid_t process_;
};

class VswitchdWatches : public testing::Test {
 protected:
  bool wait_until(bool runs) {
    return run_until(loop_, [&] { return watch_.runs() == runs; });
  }
  // Lets it look a few times.
  void look_on() {
    for (int turn = 0; turn < 10; ++turn) {
      event_base_loop(loop_.base(), EVLOOP_ONCE);
    }
  }

  EventLoop loop_;
  TemporaryFolder folder_;
  std::string file_ = folder_.path("ovs-vswitchd.pid");
  int changes_ = 0;
  VswitchdWatch watch_{
      &loop_, file_, {.between_looks = 5ms, .settling = 5ms, .leniency = 20ms}, [this] { ++changes_; }};
};

TEST_F(VswitchdWatches, SeeWhoHasTheLock) {
  std::optional<Locker> daemon(file_);
  watch_.begin(kHourly);
  EXPECT_TRUE(watch_.runs());
  look_on();
  EXPECT_TRUE(watch_.runs());
  EXPECT_EQ(changes_, 0);
  daemon.reset();
  ASSERT_TRUE(wait_until(false));
  EXPECT_EQ(watch_.why_not(), "has ended");
  EXPECT_EQ(changes_, 1);
  // Another one holds it, and has written nothing yet.
  daemon.emplace(file_);
  look_on();
  EXPECT_FALSE(watch_.runs());
  watch_.note_sign(kHourly);
  EXPECT_FALSE(watch_.runs());
  ASSERT_TRUE(wait_until(true));
  EXPECT_EQ(changes_, 2);
}

TEST_F(VswitchdWatches, SeeAFileThatIsRemoved) {
  std::optional<Locker> daemon(file_);
  watch_.begin(kNever);
  daemon.reset();
  std::filesystem::remove(file_);
  ASSERT_TRUE(wait_until(false));
  EXPECT_EQ(watch_.why_not(), "has ended");
  // No signs are due: it runs when it has the lock.
  daemon.emplace(file_);
  ASSERT_TRUE(wait_until(true));
}

TEST_F(VswitchdWatches, KnowAtOnceOfOneThatHasEnded) {
  std::optional<Locker>(file_).reset();
  watch_.begin(kNever);
  EXPECT_FALSE(watch_.runs());
  EXPECT_EQ(watch_.why_not(), "has ended");
}

TEST_F(VswitchdWatches, BelieveWithoutAFileWhereNoSignIsDue) {
  watch_.begin(kNever);
  EXPECT_TRUE(watch_.runs());
  look_on();
  EXPECT_TRUE(watch_.runs());
  watch_.end();
  EXPECT_FALSE(watch_.runs());
}

TEST_F(VswitchdWatches, WaitForASignWithoutAFile) {
  watch_.begin(kHourly);
  EXPECT_FALSE(watch_.runs());
  EXPECT_EQ(watch_.why_not(), "has yet to show a sign of life");
  watch_.note_sign(kHourly);
  ASSERT_TRUE(wait_until(true));
}

TEST_F(VswitchdWatches, NoticeSilence) {
  const Locker daemon(file_);
  watch_.begin(1ms);
  EXPECT_TRUE(watch_.runs());
  ASSERT_TRUE(wait_until(false));
  EXPECT_EQ(watch_.why_not(), "shows no sign of life");
  watch_.note_sign(kHourly);
  ASSERT_TRUE(wait_until(true));
}

TEST_F(VswitchdWatches, TrustSignsMoreThanAFileThatNobodyLocks) {
  std::optional<Locker>(file_).reset();
  watch_.begin(kHourly);
  EXPECT_FALSE(watch_.runs());
  ASSERT_TRUE(run_until(loop_, [&] {
    watch_.note_sign(kHourly);
    return watch_.runs();
  }));
  look_on();
  EXPECT_TRUE(watch_.runs());
}

TEST_F(VswitchdWatches, LookNextToTheSocket) {
  EXPECT_EQ(pid_file_beside("/var/run/openvswitch/db.sock"), "/var/run/openvswitch/ovs-vswitchd.pid");
  EXPECT_EQ(pid_file_beside("db.sock"), "ovs-vswitchd.pid");
}

}  // namespace
