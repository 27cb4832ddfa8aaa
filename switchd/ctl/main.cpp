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

struct Words {
  std::string control_path = control::kDefaultSocketPath;
  std::string key;
  std::string value;
  bool is_flat = false;
  bool as_json = false;
  int64_t delay_ms = 0;
  int64_t count = 0;
  json request;
};

void add_fault(stpswitch::Command faults, Words *words, const char *name, const char *description) {
  stpswitch::Command fault = faults.add_command(name, description);
  if (name == std::string(control::kFaultDelay)) {
    fault.add_number({.name = "MS", .description = "How late replies are, in milliseconds", .required = true},
                     1, control::kMaxDelayMs, &words->delay_ms);
  }
  if (name != std::string(control::kFaultNone)) {
    fault.add_number({.name = "--count", .description = "Only the next N replies", .type = "N"}, 1,
                     control::kMaxFaultCount, &words->count);
  }
  fault.set_callback([words, name] {
    words->request = {{control::kOperation, control::kFault}, {control::kFault, name}};
    if (words->delay_ms != 0) {
      words->request[control::kDelayMs] = words->delay_ms;
    }
    if (words->count != 0) {
      words->request[control::kCount] = words->count;
    }
  });
}

void add_commands(stpswitch::Command *program, Words *words) {
  program->add_text({.name = "--control",
                     .description = "The control socket of the switch",
                     .type = "PATH",
                     .variable = kControlVariable},
                    &words->control_path);

  stpswitch::Command show =
      program->add_command("show", "Show the spanning trees and their ports on one screen, or keys");
  show.add_text({.name = "KEY", .description = "This key, or those below it, one a line"}, &words->key);
  show.add_flag("--flat", "All keys, one a line", &words->is_flat);
  show.add_flag("--json", "As one JSON object", &words->as_json);
  show.set_callback([words] {
    if (words->key.empty() && !words->is_flat) {
      words->request = {{control::kOperation, control::kOverview}};
    } else {
      words->request = {{control::kOperation, control::kShow}, {control::kKey, words->key}};
    }
  });

  stpswitch::Command set = program->add_command("set", "Change one key");
  set.add_text({.name = "KEY", .description = "What to change", .required = true}, &words->key);
  set.add_text(
      {.name = "VALUE", .description = "Its new value; items of a list between commas", .required = true},
      &words->value);
  set.set_callback([words] {
    words->request = {
        {control::kOperation, control::kSet}, {control::kKey, words->key}, {control::kValue, words->value}};
  });

  stpswitch::Command reset = program->add_command(
      "reset", "Go back to the scenario that the switch was started with, without faults");
  reset.set_callback([words] { words->request = {{control::kOperation, control::kReset}}; });

  stpswitch::Command ping = program->add_command("ping", "Succeed when the switch answers");
  ping.set_callback([words] { words->request = {{control::kOperation, control::kPing}}; });

  stpswitch::Command faults =
      program->add_command("fault", "Commit faults in answering commands, or tell which", kFaultFooter);
  faults.set_callback([words] {
    if (words->request.is_null()) {
      words->request = {{control::kOperation, control::kFault}};
    }
  });
  add_fault(faults, words, control::kFaultDelay, "Reply late; other connections are served meanwhile");
  add_fault(faults, words, control::kFaultDrop, "Do not reply");
  add_fault(faults, words, control::kFaultGarbage, "Reply with a malformed message");
  add_fault(faults, words, control::kFaultDisconnect, "Close the connection instead of replying");
  add_fault(faults, words, control::kFaultNone, "Stop it");
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

int carry_out(const Words &words) {
  const json answer = stpswitch::ask_switch(words.control_path, words.request);
  if (!answer.at(control::kOk).get<bool>()) {
    std::cerr << "stp-switchctl: " << printed(answer.at(control::kError)) << "\n";
    return kRefused;
  }
  if (answer.contains(control::kOverview)) {
    const json &overview = answer[control::kOverview];
    std::cout << (words.as_json ? overview.dump(2) + "\n"
                                : stpoverview::print_overview(overview, stpoverview::standard_output()));
  }
  if (answer.contains(control::kFault)) {
    print_fault(answer);
  }
  if (answer.contains(control::kValues)) {
    if (words.as_json) {
      print_object(answer.at(control::kValues));
    } else {
      print_lines(answer.at(control::kValues));
    }
  }
  return EXIT_SUCCESS;
}

int parse_and_run(int argc, char **argv) {
  Words words;
  stpswitch::CommandLine line("stp-switchctl", kDescription, kFooter);
  add_commands(&line, &words);
  const std::optional<int> ended = line.read(argc, argv);
  return ended ? *ended : carry_out(words);
}

}  // namespace

int main(int argc, char **argv) {
  return stpswitch::run_program("stp-switchctl", kUnreachable, parse_and_run, argc, argv);
}
