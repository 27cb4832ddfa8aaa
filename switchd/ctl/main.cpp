// stp-switchctl: the command line.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "base/command_line.h"
#include "control/control_protocol.h"
#include "ctl/control_client.h"
#include "overview/overview.h"
#include "overview/screen.h"
#include "overview/terminal.h"

namespace {

namespace control = stpswitch::control;
using nlohmann::json;

constexpr int kRefused = 1;
constexpr int kUnreachable = stpswitch::kWrongCommandLine;

// Where the switch's control socket is, for those who do not say.
constexpr char kControlVariable[] = "STPSWITCHD_CONTROL";

constexpr char kDescription[] = "stp-switchctl - show and change a running stp-switchd\n";

constexpr char kFooter[] = R"(
KEYS
  Keys are those of the scenario file; an entry of a list is named by its number:
  switch.mode, mst.region, mst.instance.1.vlans, port.3.link, port_channel.2.vlans, access.refused_users.
  "show --flat" lists all that the switch has. A value that fails a check changes nothing.

EXIT STATUS
  0  done
  1  the switch refused: its reason is on standard error
  2  wrong command line, or no switch answers

EXAMPLES
  stp-switchctl show                        the spanning trees and their ports
  stp-switchctl show mst
  stp-switchctl show port.3 --json
  stp-switchctl set switch.mode rapid-pvst
  stp-switchctl set port.3.link down
  stp-switchctl set port.3.channel 2        joins port-channel 2; 0 leaves it
  stp-switchctl set mst.instance.1.vlans 10-25
  stp-switchctl set access.refused_users guest,ops
  stp-switchctl set mst.region -- -odd-     a value that begins with a dash
  stp-switchctl fault delay 300 --count 2
  stp-switchctl fault                       tells which fault there is, if any
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
  bool is_flat = false;
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
      ->envname(kControlVariable)
      ->capture_default_str();

  CLI::App *const show =
      app->add_subcommand("show", "Show the spanning trees and their ports on one screen, or keys");
  show->add_option("KEY", line->key, "This key, or those below it, one a line");
  show->add_flag("--flat", line->is_flat, "All keys, one a line");
  show->add_flag("--json", line->as_json, "As one JSON object");
  show->callback([line] {
    if (line->key.empty() && !line->is_flat) {
      line->request = {{control::kOperation, control::kOverview}};
    } else {
      line->request = {{control::kOperation, control::kShow}, {control::kKey, line->key}};
    }
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

  CLI::App *const faults = app->add_subcommand("fault", "Commit faults in answering commands, or tell which");
  faults->footer(kFaultFooter);
  faults->callback([line] {
    if (line->request.is_null()) {
      line->request = {{control::kOperation, control::kFault}};
    }
  });
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

void print_fault(const json &fault) {
  std::cout << printed(fault.at(control::kFault));
  if (fault.contains(control::kDelayMs)) {
    std::cout << " " << fault[control::kDelayMs];
  }
  if (fault.contains(control::kCount)) {
    std::cout << " --count " << fault[control::kCount];
  }
  std::cout << "\n";
}

int carry_out(const CommandLine &line) {
  const json answer = stpswitch::ask_switch(line.control_path, line.request);
  if (!answer.at(control::kOk).get<bool>()) {
    std::cerr << "stp-switchctl: " << printed(answer.at(control::kError)) << "\n";
    return kRefused;
  }
  if (answer.contains(control::kOverview)) {
    const json &overview = answer[control::kOverview];
    std::cout << (line.as_json ? overview.dump(2) + "\n"
                               : stpoverview::print_overview(overview, stpoverview::standard_output()));
  }
  if (answer.contains(control::kFault)) {
    print_fault(answer);
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
  const std::optional<int> ended = stpswitch::read_command_line(&app, argc, argv);
  return ended ? *ended : carry_out(line);
}

}  // namespace

int main(int argc, char **argv) {
  return stpswitch::run_program("stp-switchctl", kUnreachable, parse_and_run, argc, argv);
}
