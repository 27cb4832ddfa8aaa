// What the command lines of all programs have in common: --help, --version, and errors of one line that begin
// with the program's name. CLI11, which reads them, is included in command_line.cpp alone: it would take
// longer to compile than the rest of any program.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}  // namespace CLI

namespace stpswitch {

inline constexpr int kWrongCommandLine = 2;

// An option, or, where its name has no dashes, an argument.
struct Parameter {
  const char *name;
  const char *description;
  const char *type = nullptr;  // of its value, for --help
  bool required = false;
  const char *variable = nullptr;  // of the environment, which has the value when the command line has none
};

// A command of a program, or the program itself. Copies are the same command.
class Command {
 public:
  // What `value` holds before is the default, which --help shows.
  void add_text(const Parameter &parameter, std::string *value);
  // One that may be given several times.
  void add_texts(const Parameter &parameter, std::vector<std::string> *values);
  // From `min` to `max`.
  void add_number(const Parameter &parameter, int64_t min, int64_t max, int64_t *value);
  void add_flag(const char *name, const char *description, bool *is_given);
  // Prints a text and ends the program, whatever else is on the command line, or is missing there.
  void add_listing(const char *name, const char *description, std::string (*text)());
  // At most one command is given at a time. Without a footer, --help ends with that of the program.
  Command add_command(const char *name, const char *description, const char *footer = nullptr);
  // Called when the command was read, after those of its own commands.
  void set_callback(const std::function<void()> &callback);

 protected:
  explicit Command(CLI::App *app) : app_(app) {}

 private:
  CLI::App *app_;
};

class CommandLine : public Command {
 public:
  CommandLine(const char *program, const char *description, const char *footer);
  CommandLine(const CommandLine &) = delete;
  CommandLine &operator=(const CommandLine &) = delete;
  ~CommandLine();

  // What there is to say is on standard error or standard output then. Nothing, or the exit status with which
  // the program ends: after --help, --version or a listing, or when the command line is wrong.
  std::optional<int> read(int argc, char **argv);

  // Says what is wrong with a command line that has been read; returns the exit status.
  int refuse(const std::string &reason) const;

 private:
  explicit CommandLine(std::unique_ptr<CLI::App> app);

  std::unique_ptr<CLI::App> app_;
};

// A program: what its body throws is one line on standard error, as is that its output is lost, and ends it
// with `failure`; otherwise with what the body returns.
int run_program(const char *name, int failure, int (*body)(int argc, char **argv), int argc, char **argv);

}  // namespace stpswitch
