#include "base/command_line.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "base/nearest.h"

namespace stpswitch {
namespace {

const CLI::App &last_command(const CLI::App &app) {
  const auto commands = app.get_subcommands();
  return commands.empty() ? app : last_command(*commands.front());
}

std::vector<std::string> commands_of(const CLI::App &app) {
  std::vector<std::string> names;
  for (const CLI::App *const command : app.get_subcommands([](const CLI::App *) { return true; })) {
    names.push_back(command->get_name());
  }
  return names;
}

std::vector<std::string> options_of(const CLI::App &app, const CLI::App &command) {
  std::vector<std::string> names;
  for (const CLI::App *const owner : {&app, &command}) {
    for (const CLI::Option *const option : owner->get_options()) {
      for (const std::string &name : option->get_lnames()) {
        names.push_back("--" + name);
      }
    }
  }
  return names;
}

std::string listed(const std::vector<std::string> &names) {
  std::string list;
  for (size_t i = 0; i < names.size(); ++i) {
    list += i == 0 ? "" : i + 1 < names.size() ? ", " : " or ";
    list += names[i];
  }
  return list;
}

std::string unexpected(const std::string &word, const CLI::App &app) {
  const CLI::App &command = last_command(app);
  if (word.starts_with("-")) {
    return "unknown option '" + word + "'" + suggestion(word, options_of(app, command));
  }
  const std::vector<std::string> commands = commands_of(command);
  if (commands.empty()) {
    return "unexpected argument '" + word + "'";
  }
  return "'" + word + "' is not " + listed(commands) + suggestion(word, commands);
}

CLI::Option *complete(CLI::Option *option, const Parameter &parameter) {
  option->required(parameter.required);
  if (parameter.type != nullptr) {
    option->type_name(parameter.type);
  }
  if (parameter.variable != nullptr) {
    option->envname(parameter.variable);
  }
  return option;
}

std::string explain(const CLI::App &app, const CLI::ParseError &error) {
  const std::vector<std::string> left = app.remaining(true);
  // What is missing may be what is misspelt.
  const bool is_about_words = dynamic_cast<const CLI::ExtrasError *>(&error) != nullptr ||
                              dynamic_cast<const CLI::RequiredError *>(&error) != nullptr;
  if (is_about_words && !left.empty()) {
    return unexpected(left.front(), app);
  }
  return error.what();
}

}  // namespace

void Command::add_text(const Parameter &parameter, std::string *value) {
  CLI::Option *const option =
      complete(app_->add_option(parameter.name, *value, parameter.description), parameter);
  if (!value->empty()) {
    option->capture_default_str();
  }
}

void Command::add_texts(const Parameter &parameter, std::vector<std::string> *values) {
  complete(app_->add_option(parameter.name, *values, parameter.description), parameter)
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void Command::add_number(const Parameter &parameter, int64_t min, int64_t max, int64_t *value) {
  complete(app_->add_option(parameter.name, *value, parameter.description), parameter)
      ->check(CLI::Range(min, max));
}

void Command::add_flag(const char *name, const char *description, bool *is_given) {
  app_->add_flag(name, *is_given, description);
}

void Command::add_listing(const char *name, const char *description, std::string (*text)()) {
  const auto print = [text] {
    std::cout << text();
    throw CLI::Success();
  };
  app_->add_flag_callback(name, print, description);
}

Command Command::add_command(const char *name, const char *description, const char *footer) {
  app_->require_subcommand(0, 1);
  CLI::App *const command = app_->add_subcommand(name, description);
  if (footer != nullptr) {
    command->footer(footer);
  }
  return Command(command);
}

void Command::set_callback(const std::function<void()> &callback) { app_->callback(callback); }

CommandLine::CommandLine(std::unique_ptr<CLI::App> app) : Command(app.get()), app_(std::move(app)) {}

CommandLine::CommandLine(const char *program, const char *description, const char *footer)
    : CommandLine(std::make_unique<CLI::App>(description, program)) {
  app_->footer(footer);
}

CommandLine::~CommandLine() = default;

std::optional<int> CommandLine::read(int argc, char **argv) {
  app_->set_version_flag("--version", app_->get_name() + " " STPSNMP_VERSION);
  try {
    app_->parse(argc, argv);
    const std::vector<std::string> commands = commands_of(*app_);
    if (!commands.empty() && app_->get_subcommands().empty()) {
      return refuse("expected " + listed(commands));
    }
    return std::nullopt;
  } catch (const CLI::Success &asked) {
    return app_->exit(asked);
  } catch (const CLI::ParseError &error) {
    return refuse(explain(*app_, error));
  }
}

int CommandLine::refuse(const std::string &reason) const {
  std::cerr << app_->get_name() << ": " << reason << " (see --help)\n";
  return kWrongCommandLine;
}

int run_program(const char *name, int failure, int (*body)(int argc, char **argv), int argc, char **argv) {
  try {
    const int status = body(argc, argv);
    if (!std::cout.flush()) {
      throw std::runtime_error("cannot write to standard output");
    }
    return status;
  } catch (const std::exception &error) {
    std::cerr << name << ": " << error.what() << "\n";
    return failure;
  }
}

}  // namespace stpswitch
