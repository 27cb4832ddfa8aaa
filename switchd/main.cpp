// stp-switchd: the command line.
#include <sysexits.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/command_line.h"
#include "control/control_protocol.h"
#include "keys/key_list.h"
#include "model/refusal.h"
#include "server/switch_process.h"
#include "sources/linux_bridge/linux_bridge_source.h"
#include "sources/openvswitch/openvswitch_source.h"
#include "sources/scenario/loader.h"
#include "sources/scenario/scenario_source.h"
#include "wire/message.h"

namespace {

constexpr char kName[] = "stp-switchd";

constexpr char kDescription[] =
    "stp-switchd - a switch's spanning-tree process, and what its interface, port-channel and VLAN managers "
    "know:\nof a Linux bridge, of Open vSwitch, or as a scenario file describes them\n";

constexpr char kFooter[] = R"(
DESCRIPTION
  Answers the SNMP agent's commands on the command socket, and stp-switchctl on the control socket, until SIGTERM or
  SIGINT stops it. It stays in the foreground and logs to standard error, one line each; "ready" tells that both
  sockets answer.

  Exactly one of --scenario, --linux-bridge and --openvswitch tells where the switch comes from. Bridges are only read,
  their own tools set them; one that is not there, or that nothing can be read of, is waited for, with a line that says
  what to do.

  The command socket has mode 0660: members of its group can read the switch, as SNMP users whom a scenario does
  not refuse. The control socket has mode 0600: only its owner can change the switch. The file of a socket that
  nobody listens to any more is replaced, one that is in use is an error. Only /run/stp-switchd is created when it
  is missing, with mode 0750 and the socket's group.

EXIT STATUS
  0   stopped by a signal, or the scenario passed --check, or the keys are listed
  1   the switch cannot start: one line on standard error says why
  2   wrong command line
  78  the scenario has an error: one line on standard error names file, line, key and reason

EXAMPLES
  stp-switchd --linux-bridge br0 --socket-group Debian-snmp
  stp-switchd --openvswitch br0 --socket-group Debian-snmp
  stp-switchd --openvswitch br10=10 --openvswitch br20=20
  stp-switchd --keys | grep root_guard
  stp-switchd --scenario scenarios/mst-small.toml --check
  stp-switchd --scenario lab.toml --socket /tmp/lab/switch.sock --control /tmp/lab/control.sock

SEE ALSO
  stp-switchctl --help, snmpd(8)
)";

// Where the switch is to come from: exactly one of the first three.
struct SourceOptions {
  std::string scenario;
  std::string linux_bridge;
  std::vector<std::string> openvswitch;
  std::string ovsdb = stpswitch::kDefaultOvsdbSocket;
};

void add_source_options(stpswitch::CommandLine *line, SourceOptions *options) {
  line->add_text({.name = "--scenario", .description = "The switch to be, a TOML file", .type = "FILE"},
                 &options->scenario);
  line->add_text({.name = "--linux-bridge", .description = "The Linux bridge to tell of", .type = "NAME"},
                 &options->linux_bridge);
  line->add_texts(
      {.name = "--openvswitch",
       .description = "The Open vSwitch bridge to tell of; with a VLAN, and given once for each, the "
                      "bridge of that VLAN's tree",
       .type = "NAME[=VLAN]"},
      &options->openvswitch);
  line->add_text(
      {.name = "--ovsdb", .description = "The socket of Open vSwitch's database", .type = "SOCKET"},
      &options->ovsdb);
}

int count_of_sources(const SourceOptions &options) {
  return int{!options.scenario.empty()} + int{!options.linux_bridge.empty()} +
         int{!options.openvswitch.empty()};
}

std::unique_ptr<stpswitch::Source> make_source(const SourceOptions &options, stpswitch::EventLoop *loop) {
  if (!options.linux_bridge.empty()) {
    return std::make_unique<stpswitch::LinuxBridgeSource>(loop, options.linux_bridge);
  }
  if (!options.openvswitch.empty()) {
    return std::make_unique<stpswitch::OpenVSwitchSource>(
        loop, options.ovsdb, stpswitch::parse_watched_bridges(options.openvswitch));
  }
  return std::make_unique<stpswitch::ScenarioSource>(options.scenario);
}

int parse_and_run(int argc, char **argv) {
  stpswitch::ProcessOptions options;
  options.socket = stpplatform::wire::kDefaultSocketPath;
  options.control = stpswitch::control::kDefaultSocketPath;
  SourceOptions source;
  bool only_check = false;

  stpswitch::CommandLine line(kName, kDescription, kFooter);
  add_source_options(&line, &source);
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
  if (count_of_sources(source) != 1) {
    return line.refuse("expected one of --scenario, --linux-bridge and --openvswitch");
  }
  if (source.openvswitch.empty() && source.ovsdb != stpswitch::kDefaultOvsdbSocket) {
    return line.refuse("--ovsdb is for --openvswitch");
  }
  if (only_check && source.scenario.empty()) {
    return line.refuse("--check is for a scenario");
  }
  try {
    if (only_check) {
      stpswitch::load_scenario(source.scenario);
    } else {
      options.make_source = [&source](stpswitch::EventLoop *loop) { return make_source(source, loop); };
      stpswitch::run_switch(options);
    }
  } catch (const stpswitch::ScenarioError &error) {
    std::cerr << kName << ": " << error.what() << "\n";
    return EX_CONFIG;
  } catch (const stpswitch::Refusal &refusal) {
    return line.refuse(std::string(source.linux_bridge.empty() ? "--openvswitch" : "--linux-bridge") + ": " +
                       refusal.what());
  }
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char **argv) {
  return stpswitch::run_program(kName, EXIT_FAILURE, parse_and_run, argc, argv);
}
