// stp-switchd: the command line.
#include <sysexits.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "base/command_line.h"
#include "control/control_protocol.h"
#include "keys/key_list.h"
#include "server/switch_process.h"
#include "sources/scenario/loader.h"
#include "sources/scenario/scenario_source.h"
#include "wire/message.h"

namespace {

constexpr char kName[] = "stp-switchd";

constexpr char kDescription[] =
    "stp-switchd - a switch's spanning-tree process, and what its interface, port-channel and VLAN managers "
    "know,\nas a scenario file describes them\n";

constexpr char kFooter[] = R"(
DESCRIPTION
  Answers the SNMP agent's commands on the command socket, and stp-switchctl on the control socket, until SIGTERM or
  SIGINT stops it. It stays in the foreground and logs to standard error, one line each; "ready" tells that both
  sockets answer.

  The command socket has mode 0660: members of its group can read the switch, as SNMP users whom the scenario does
  not refuse. The control socket has mode 0600: only its owner can change the switch. The file of a socket that
  nobody listens to any more is replaced, one that is in use is an error. Only /run/stp-switchd is created when it
  is missing, with mode 0750 and the socket's group.

EXIT STATUS
  0   stopped by a signal, or the scenario passed --check, or the keys are listed
  1   the switch cannot start: one line on standard error says why
  2   wrong command line
  78  the scenario has an error: one line on standard error names file, line, key and reason

EXAMPLES
  stp-switchd --keys | grep root_guard
  stp-switchd --scenario scenarios/mst-small.toml --check
  stp-switchd --scenario scenarios/mst-small.toml --socket-group Debian-snmp
  stp-switchd --scenario lab.toml --socket /tmp/lab/switch.sock --control /tmp/lab/control.sock

SEE ALSO
  stp-switchctl --help, snmpd(8)
)";

int parse_and_run(int argc, char **argv) {
  stpswitch::ProcessOptions options;
  options.socket = stpplatform::wire::kDefaultSocketPath;
  options.control = stpswitch::control::kDefaultSocketPath;
  std::string scenario;
  bool only_check = false;

  stpswitch::CommandLine line(kName, kDescription, kFooter);
  line.add_text({.name = "--scenario",
                 .description = "The switch to be, a TOML file",
                 .type = "FILE",
                 .required = true},
                &scenario);
  line.add_text({.name = "--socket", .description = "Where to listen for commands", .type = "PATH"},
                &options.socket);
  line.add_text({.name = "--control", .description = "Where to listen for stp-switchctl", .type = "PATH"},
                &options.control);
  line.add_text({.name = "--socket-group",
                 .description = "The group that may send commands (default: the process's own)",
                 .type = "GROUP"},
                &options.socket_group);
  line.add_flag("--check", "Check the scenario and exit", &only_check);
  line.add_listing("--keys", "List sections and keys of scenarios and exit", stpswitch::list_keys);
  if (const std::optional<int> ended = line.read(argc, argv)) {
    return *ended;
  }
  try {
    if (only_check) {
      stpswitch::load_scenario(scenario);
    } else {
      options.make_source = [&scenario](stpswitch::EventLoop * /*loop*/) {
        return std::make_unique<stpswitch::ScenarioSource>(scenario);
      };
      stpswitch::run_switch(options);
    }
  } catch (const stpswitch::ScenarioError &error) {
    std::cerr << kName << ": " << error.what() << "\n";
    return EX_CONFIG;
  }
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char **argv) {
  return stpswitch::run_program(kName, EXIT_FAILURE, parse_and_run, argc, argv);
}
