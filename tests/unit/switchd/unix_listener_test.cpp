#include "server/unix_listener.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <filesystem>
#include <memory>
#include <string>

#include "support/refused_lock.h"
#include "support/temporary_folder.h"

using namespace stpswitch;

namespace {

class UnixListeners : public testing::Test {
 protected:
  UnixSocketOptions options(int type = SOCK_STREAM, mode_t mode = 0600) const {
    return {path_, type, mode, std::nullopt};
  }

  std::string error_of(UnixSocketOptions wanted) const {
    try {
      const UnixListener listener(std::move(wanted));
    } catch (const std::runtime_error &error) {
      return error.what();
    }
    return "no error";
  }

  mode_t permissions() const {
    struct stat file {};
    EXPECT_EQ(::lstat(path_.c_str(), &file), 0);
    EXPECT_TRUE(S_ISSOCK(file.st_mode));
    return file.st_mode & 07777U;
  }

  bool exists() const { return std::filesystem::exists(std::filesystem::symlink_status(path_)); }

  TemporaryFolder folder_;
  std::string path_ = folder_.path("test.sock");
};

TEST_F(UnixListeners, CreateTheFileWithItsModeWhateverTheMask) {
  for (const mode_t mask : {0U, 022U, 0777U}) {
    const mode_t before = ::umask(mask);
    const auto group_may = std::make_unique<UnixListener>(options(SOCK_SEQPACKET, 0660));
    EXPECT_EQ(::umask(before), mask);
    EXPECT_EQ(permissions(), 0660U);
  }
  const UnixListener owner_only(options(SOCK_STREAM, 0600));
  EXPECT_EQ(permissions(), 0600U);
}

TEST_F(UnixListeners, SetTheGroup) {
  UnixSocketOptions wanted = options();
  wanted.group = ::geteuid() == 0 ? 4242 : ::getegid();
  const UnixListener listener(wanted);
  struct stat file {};
  ASSERT_EQ(::lstat(path_.c_str(), &file), 0);
  EXPECT_EQ(file.st_gid, wanted.group);
}

TEST_F(UnixListeners, AreClosedOnExecAndNonblocking) {
  const UnixListener listener(options());
  EXPECT_EQ(::fcntl(listener.fd(), F_GETFD), FD_CLOEXEC);
  EXPECT_NE(::fcntl(listener.fd(), F_GETFL) & O_NONBLOCK, 0);
}

TEST_F(UnixListeners, RemoveTheFileAtTheEnd) {
  { const UnixListener listener(options()); }
  EXPECT_FALSE(exists());
}

TEST_F(UnixListeners, LeaveAFileThatIsNotTheirs) {
  {
    const UnixListener listener(options());
    std::filesystem::remove(path_);
    folder_.write("test.sock", "somebody else's");
  }
  EXPECT_TRUE(exists());
}

TEST_F(UnixListeners, ReplaceASocketThatNobodyListensTo) {
  std::filesystem::path stale = path_;
  {
    const UnixListener listener(options());
    std::filesystem::rename(path_, path_ + ".kept");
  }
  std::filesystem::rename(path_ + ".kept", path_);
  ASSERT_TRUE(exists());
  EXPECT_EQ(error_of(options()), "no error");
}

TEST_F(UnixListeners, RefuseASocketThatIsInUse) {
  const UnixListener listener(options());
  EXPECT_EQ(error_of(options()), path_ + " is in use");
  EXPECT_EQ(error_of(options(SOCK_SEQPACKET)), path_ + " is in use");
  EXPECT_TRUE(exists());
}

TEST_F(UnixListeners, RefuseAFileThatIsNoSocket) {
  folder_.write("test.sock", "precious");
  EXPECT_EQ(error_of(options()), path_ + " exists and is not a socket");
  EXPECT_TRUE(exists());
}

TEST_F(UnixListeners, DoNotFollowLinks) {
  folder_.write("target", "precious");
  std::filesystem::create_symlink(folder_.path("target"), path_);
  EXPECT_EQ(error_of(options()), path_ + " exists and is not a socket");
}

TEST_F(UnixListeners, NameAFolderThatIsMissing) {
  path_ = folder_.path("none") + "/test.sock";
  EXPECT_EQ(error_of(options()), path_ + ": the socket's directory " + folder_.path("none") +
                                     " cannot be opened: No such file or directory");
}

class LockedFolder {
 public:
  explicit LockedFolder(const std::string &folder)
      : fd_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    EXPECT_EQ(::flock(fd_.get(), LOCK_EX), 0);
  }
  void unlock() { fd_ = {}; }

 private:
  stpplatform::OwnedFd fd_;
};

TEST_F(UnixListeners, NameAFolderThatSomebodyElseKeepsLocked) {
  const LockedFolder locked(folder_.path("."));
  EXPECT_EQ(error_of(options()), path_ + ": the socket's directory " +
                                     std::filesystem::path(path_).parent_path().string() +
                                     " is locked by another process");
  EXPECT_FALSE(exists());
}

TEST_F(UnixListeners, WaitForAFolderThatIsLockedForAMoment) {
  LockedFolder locked(folder_.path("."));
  const RefusedLock refused([&] { locked.unlock(); });
  EXPECT_EQ(error_of(options()), "no error");
  EXPECT_EQ(refused.refusals(), 1);
}

TEST_F(UnixListeners, NameAPathThatIsTooLongOrEmpty) {
  path_ = folder_.path(std::string(108, 'n'));
  EXPECT_EQ(error_of(options()), path_ + ": a socket's path cannot be longer than 107 octets");
  path_ = "";
  EXPECT_EQ(error_of(options()), "the path of a socket is empty");
}

}  // namespace
