#include "support/program.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>

Program::Program(const std::string &path, std::vector<std::string> arguments)
    : output_(::memfd_create("output", MFD_CLOEXEC)), errors_(::memfd_create("errors", MFD_CLOEXEC)) {
  std::vector<char *> words{const_cast<char *>(path.c_str())};
  for (std::string &argument : arguments) {
    words.push_back(argument.data());
  }
  words.push_back(nullptr);
  process_ = ::fork();
  if (process_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::dup2(output_, STDOUT_FILENO);
    ::dup2(errors_, STDERR_FILENO);
    ::execv(path.c_str(), words.data());
    ::_exit(127);
  }
}

Program::~Program() {
  if (is_running_) {
    ::kill(process_, SIGKILL);
    wait();
  }
  ::close(output_);
  ::close(errors_);
}

void Program::signal(int number) const { ::kill(process_, number); }

void Program::suspend() const {
  signal(SIGSTOP);
  ::waitpid(process_, nullptr, WUNTRACED);
}

bool Program::has_ended() {
  is_running_ = is_running_ && ::waitpid(process_, &status_, WNOHANG) != process_;
  return !is_running_;
}

ProgramResult Program::wait() {
  if (is_running_) {
    ::waitpid(process_, &status_, 0);
    is_running_ = false;
  }
  return {WIFEXITED(status_) ? WEXITSTATUS(status_) : -WTERMSIG(status_), read(output_), read(errors_)};
}

std::string Program::errors() const { return read(errors_); }

std::string Program::read(int fd) const {
  std::string text;
  std::array<char, 4096> block{};
  ssize_t got = 0;
  while ((got = ::pread(fd, block.data(), block.size(), static_cast<off_t>(text.size()))) > 0) {
    text.append(block.data(), static_cast<size_t>(got));
  }
  return text;
}

ProgramResult run_program(const std::string &path, std::vector<std::string> arguments) {
  return Program(path, std::move(arguments)).wait();
}
