// stp-switchctl: the command line.
#include <CLI/CLI.hpp>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "control/control_protocol.h"
#include "ctl/control_client.h"

namespace {

namespace control = stpswitch::control;
using nlohmann::json;

constexpr int kRefused = 1;
constexpr int kUsageOrUnreachable = 2;

constexpr char kDescription[] = "stp-switchctl - show and change a running stp-switchd\n";

constexpr char kFooter[] = R"(
KEYS
  Keys are those of the scenario file; an entry of a list is named by its number:
  switch.mode, mst.region, mst.instance.1.vlans, port.3.link, port_channel.2.vlans, access.refused_users.
  "show" without a key lists all that the switch has. A value that fails a check changes nothing.

EXIT STATUS
  0  done
  1  the switch refused: its reason is on standard error
  2  wrong command line, or no switch answers

EXAMPLES
  stp-switchctl show mst
  stp-switchctl show port.3 --json
  stp-switchctl set switch.mode rapid-pvst
  stp-switchctl set port.3.link down
  stp-switchctl set port.3.channel 2        joins port-channel 2; 0 leaves it
  stp-switchctl set mst.instance.1.vlans 10-25
  stp-switchctl set access.refused_users guest,ops
  stp-switchctl set mst.region -- -odd-     a value that begins with a dash
  stp-switchctl fault delay 300 --count 2
  stp-switchctl fault none
  stp-switchctl reset

SEE ALSO
  stp-switchd --help
)";

constexpr char kFaultFooter[] = R"(
A fault applies to all replies to commands from now on, or to the next N, and replaces the one before. The garbage
is of a different kind each time, in an order that is always the same. The control socket never has faults.
)";

struct CommandLine {
  std::string control_path = control::kDefaultSocketPath;
  std::string key;
  std::string value;
  bool as_json = false;
  int64_t delay_ms = 0;
  int64_t count = 0;
  json request;
};

void add_fault(CLI::App *faults, CommandLine *line, const char *name, const char *description) {
  CLI::App *const fault = faults->add_subcommand(name, description);
  if (name == std::string(control::kFaultDelay)) {
    fault->add_option("MS", line->delay_ms, "How late replies are, in milliseconds")
        ->required()
        ->check(CLI::Range(int64_t{1}, control::kMaxDelayMs));
  }
  if (name != std::string(control::kFaultNone)) {
    fault->add_option("--count", line->count, "Only the next N replies")
        ->type_name("N")
        ->check(CLI::Range(int64_t{1}, control::kMaxFaultCount));
  }
  fault->callback([line, name] {
    line->request = {{control::kOperation, control::kFault}, {control::kFault, name}};
    if (line->delay_ms != 0) {
      line->request[control::kDelayMs] = line->delay_ms;
    }
    if (line->count != 0) {
      line->request[control::kCount] = line->count;
    }
  });
}

void add_commands(CLI::App *app, CommandLine *line) {
  app->add_option("--control", line->control_path, "The control socket of the switch")
      ->type_name("PATH")
      ->capture_default_str();

  CLI::App *const show = app->add_subcommand("show", "Show what is configured");
  show->add_option("KEY", line->key, "Only this key, or those below it");
  show->add_flag("--json", line->as_json, "As one JSON object");
  show->callback([line] {
    line->request = {{control::kOperation, control::kShow}, {control::kKey, line->key}};
  });

  CLI::App *const set = app->add_subcommand("set", "Change one key");
  set->add_option("KEY", line->key, "What to change")->required();
  set->add_option("VALUE", line->value, "Its new value; items of a list between commas")->required();
  set->callback([line] {
    line->request = {
        {control::kOperation, control::kSet}, {control::kKey, line->key}, {control::kValue, line->value}};
  });

  CLI::App *const reset = app->add_subcommand(
      "reset", "Go back to the scenario that the switch was started with, without faults");
  reset->callback([line] { line->request = {{control::kOperation, control::kReset}}; });

  CLI::App *const ping = app->add_subcommand("ping", "Succeed when the switch answers");
  ping->callback([line] { line->request = {{control::kOperation, control::kPing}}; });

  CLI::App *const faults = app->add_subcommand("fault", "Commit faults in answering commands");
  faults->footer(kFaultFooter);
  add_fault(faults, line, control::kFaultDelay, "Reply late; other connections are served meanwhile");
  add_fault(faults, line, control::kFaultDrop, "Do not reply");
  add_fault(faults, line, control::kFaultGarbage, "Reply with a malformed message");
  add_fault(faults, line, control::kFaultDisconnect, "Close the connection instead of replying");
  add_fault(faults, line, control::kFaultNone, "Stop it");
}

std::string printed(const json &value) {
  if (value.is_string()) {
    return value;
  }
  if (!value.is_array()) {
    return value.dump();
  }
  std::string text;
  for (const json &item : value) {
    text += (text.empty() ? "" : ",") + printed(item);
  }
  return text;
}

void print_lines(const json &values) {
  for (const json &pair : values) {
    std::cout << printed(pair.at(0)) << " = " << printed(pair.at(1)) << "\n";
  }
}

// Written by hand so that the keys stay in the switch's order.
void print_object(const json &values) {
  const char *separator = "{\n  ";
  for (const json &pair : values) {
    std::cout << separator << pair.at(0).dump() << ": " << pair.at(1).dump();
    separator = ",\n  ";
  }
  std::cout << (values.empty() ? "{}\n" : "\n}\n");
}

int carry_out(const CommandLine &line) {
  const json answer = stpswitch::ask_switch(line.control_path, line.request);
  if (!answer.at(control::kOk).get<bool>()) {
    std::cerr << "stp-switchctl: " << printed(answer.at(control::kError)) << "\n";
    return kRefused;
  }
  if (answer.contains(control::kValues)) {
    if (line.as_json) {
      print_object(answer.at(control::kValues));
    } else {
      print_lines(answer.at(control::kValues));
    }
  }
  return EXIT_SUCCESS;
}

int parse_and_run(int argc, char **argv) {
  CommandLine line;
  CLI::App app(kDescription, "stp-switchctl");
  app.footer(kFooter);
  add_commands(&app, &line);
  try {
    app.parse(argc, argv);
    if (line.request.is_null()) {
      throw CLI::RequiredError::Subcommand(1);
    }
  } catch (const CLI::ParseError &error) {
    return app.exit(error) == EXIT_SUCCESS ? EXIT_SUCCESS : kUsageOrUnreachable;
  }
  return carry_out(line);
}

}  // namespace

int main(int argc, char **argv) {
  try {
    const int status = parse_and_run(argc, argv);
    if (!std::cout.flush()) {
      throw std::runtime_error("cannot write to standard output");
    }
    return status;
  } catch (const std::exception &error) {
    std::cerr << "stp-switchctl: " << error.what() << "\n";
    return kUsageOrUnreachable;
  }
}
