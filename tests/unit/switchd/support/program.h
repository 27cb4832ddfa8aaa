// Runs a program of the project.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

struct ProgramResult {
  int status;  // exit status, or the negative number of the signal that ended it
  std::string output;
  std::string errors;
};

class Program {
 public:
  // Starts it with its output and errors in files. It dies with the test.
  Program(const std::string &path, std::vector<std::string> arguments);
  ~Program();
  Program(const Program &) = delete;
  Program &operator=(const Program &) = delete;

  void signal(int number) const;

  // Stops it; it has stopped when this returns.
  void suspend() const;
  bool has_ended();
  ProgramResult wait();

  // What it has written so far.
  std::string errors() const;

 private:
  std::string read(int fd) const;

  int output_;
  int errors_;
  pid_t process_;
  bool is_running_ = true;
  int status_ = 0;
};

// Runs it to its end.
ProgramResult run_program(const std::string &path, std::vector<std::string> arguments);
