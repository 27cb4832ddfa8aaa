// One getter over the shipped platform and a running switch, whose image answers it, against the same
// question by socket, and against an echo of messages of the same size over a socket of the same kind: the
// least that any answer from another process can cost.
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include <benchmark/benchmark.h>

#include "platform/stp_protocol.h"
#include "stpsnmp/scalars.h"
#include "wire/attributes.h"
#include "wire/message.h"
#include "wire/owned_fd.h"

namespace wire = stpplatform::wire;

namespace {

constexpr size_t kRequestSize = 120;  // a request with one key
constexpr size_t kReplySize = 84;     // the reply of the global settings

void EchoOfTheSameSize(benchmark::State &state) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    state.SkipWithError("no socket pair");
    return;
  }
  std::array<char, kRequestSize> request{};
  std::array<char, kReplySize> reply{};
  const pid_t echo = fork();
  if (echo == 0) {
    close(ends[0]);
    while (read(ends[1], request.data(), request.size()) > 0 &&
           write(ends[1], reply.data(), reply.size()) > 0) {
    }
    _exit(0);
  }
  close(ends[1]);
  for (auto _ : state) {
    if (write(ends[0], request.data(), request.size()) < 0 || read(ends[0], reply.data(), reply.size()) < 0) {
      state.SkipWithError("echo is gone");
      break;
    }
  }
  close(ends[0]);
  waitpid(echo, nullptr, 0);
}
BENCHMARK(EchoOfTheSameSize)->UseRealTime();

constexpr char kSocketVariable[] = "STPPLATFORM_SOCKET";
// The folder that is this run's own, and goes with it.
constexpr char kFolderVariable[] = "ROUND_TRIP_BENCHMARK_FOLDER";

stpplatform::OwnedFd connect_to_switch() {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, getenv(kSocketVariable), sizeof address.sun_path - 1);
  stpplatform::OwnedFd fd(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  wire::Hello hello;
  if (connect(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
      recv(fd.get(), &hello, sizeof hello, 0) != sizeof hello) {
    fd.reset();
  }
  return fd;
}

// For the scalar of ScalarFromTheImage.
struct GlobalSettings {
  wire::Request request{};
  wire::AttributeHead key{STP_KEY_GLOBAL_SETTINGS, sizeof value};
  uint32_t value = 0;

  GlobalSettings() {
    request.header = {wire::kMagic, wire::kVersion, static_cast<uint16_t>(wire::MessageType::kRequest),
                      sizeof *this, 1};
    request.destination = STP_DESTINATION;
    request.service = STP_SERVICE;
    request.command = STP_COMMAND_GLOBAL_SETTINGS;
    request.action = CMD_ACTION_GET;
    request.attribute_count = 1;
  }
};
static_assert(sizeof(GlobalSettings) == kRequestSize);

void QuestionBySocket(benchmark::State &state) {
  const stpplatform::OwnedFd fd = connect_to_switch();
  const GlobalSettings question;
  std::array<char, kReplySize> reply{};
  for (auto _ : state) {
    if (send(fd.get(), &question, sizeof question, 0) != sizeof question ||
        recv(fd.get(), reply.data(), reply.size(), 0) != kReplySize) {
      state.SkipWithError("the switch does not answer");
      break;
    }
  }
}
BENCHMARK(QuestionBySocket)->UseRealTime();

void ScalarFromTheImage(benchmark::State &state) {
  ScalarValueRecord record{};
  for (auto _ : state) {
    if (get_stpxSpanningTreeType(&record) != 0) {
      state.SkipWithError("the switch does not answer");
      break;
    }
  }
}
BENCHMARK(ScalarFromTheImage)->UseRealTime();

class Switch {
 public:
  explicit Switch(const std::filesystem::path &socket) : pid_(fork()) {
    if (pid_ == 0) {
      const std::string control = socket.parent_path() / "control.sock";
      execl(SWITCHD, SWITCHD, "--scenario", SCENARIO, "--socket", socket.c_str(), "--control",
            control.c_str(), nullptr);
      _exit(127);
    }
  }
  ~Switch() {
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
  }
  Switch(const Switch &) = delete;
  Switch &operator=(const Switch &) = delete;

 private:
  pid_t pid_;
};

// The platform library reads its environment when it is loaded, so the program starts itself once more.
int start_again_with_private_socket(char **argv) {
  char folder[] = "/tmp/round_trip_benchmark.XXXXXX";
  if (mkdtemp(folder) == nullptr) {
    perror("mkdtemp");
    return EXIT_FAILURE;
  }
  setenv(kFolderVariable, folder, 1);
  setenv(kSocketVariable, (std::string(folder) + "/switch.sock").c_str(), 1);
  execv("/proc/self/exe", argv);
  perror("execv");
  return EXIT_FAILURE;
}

bool wait_for_switch() {
  constexpr int kAttempts = 100;
  constexpr useconds_t kPause = 50'000;
  ScalarValueRecord record{};
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (get_stpxSpanningTreeType(&record) == 0) {
      return true;
    }
    usleep(kPause);
  }
  fprintf(stderr, "stp-switchd does not answer\n");
  return false;
}

}  // namespace

int main(int argc, char **argv) {
  const char *const folder = getenv(kFolderVariable);
  if (folder == nullptr) {
    return start_again_with_private_socket(argv);
  }
  benchmark::Initialize(&argc, argv);
  bool ready = false;
  {
    const Switch running(getenv(kSocketVariable));
    ready = wait_for_switch();
    if (ready) {
      benchmark::RunSpecifiedBenchmarks();
    }
  }
  std::filesystem::remove_all(folder);
  return ready ? EXIT_SUCCESS : EXIT_FAILURE;
}
