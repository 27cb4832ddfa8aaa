#include "base/command_line.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>
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

std::string explain(const CLI::App &app, const CLI::ParseError &error) {
  const std::vector<std::string> left = app.remaining(true);
  if (dynamic_cast<const CLI::ExtrasError *>(&error) != nullptr && !left.empty()) {
    return unexpected(left.front(), app);
  }
  return error.what();
}

}  // namespace

std::optional<int> read_command_line(CLI::App *app, int argc, char **argv) {
  app->set_version_flag("--version", app->get_name() + " " STPSNMP_VERSION);
  try {
    app->parse(argc, argv);
    const std::vector<std::string> commands = commands_of(*app);
    if (!commands.empty() && app->get_subcommands().empty()) {
      std::cerr << app->get_name() << ": expected " << listed(commands) << " (see --help)\n";
      return kWrongCommandLine;
    }
    return std::nullopt;
  } catch (const CLI::Success &asked) {
    return app->exit(asked);
  } catch (const CLI::ParseError &error) {
    std::cerr << app->get_name() << ": " << explain(*app, error) << " (see --help)\n";
    return kWrongCommandLine;
  }
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
