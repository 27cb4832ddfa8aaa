// stp-overview: shows the JSON text of an overview.
#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "base/command_line.h"
#include "model/refusal.h"
#include "overview/overview.h"
#include "overview/screen.h"
#include "overview/terminal.h"

namespace {

constexpr char kDescription[] =
    "stp-overview - shows the spanning trees of a switch and their ports on one screen\n\n"
    "Reads the JSON text that \"stp-switchctl show --json\" prints, or what another program knows of a\n"
    "switch in the same form; stp-show-walk makes it of a walk.\n";

constexpr char kFooter[] = R"(
EXIT STATUS
  0  shown
  1  it cannot be read: one line on standard error says why
  2  wrong command line

EXAMPLES
  stp-switchctl show --json >switch.json
  stp-overview <switch.json
)";

nlohmann::json read_json(std::istream &input) {
  try {
    return nlohmann::json::parse(input);
  } catch (const nlohmann::json::parse_error &error) {
    throw stpswitch::Refusal("standard input is not JSON at octet " + std::to_string(error.byte));
  }
}

int parse_and_run(int argc, char **argv) {
  stpswitch::CommandLine line("stp-overview", kDescription, kFooter);
  if (const std::optional<int> ended = line.read(argc, argv)) {
    return *ended;
  }
  const stpoverview::Overview overview = read_json(std::cin);
  std::cout << stpoverview::print_overview(overview, stpoverview::standard_output());
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char **argv) {
  return stpswitch::run_program("stp-overview", EXIT_FAILURE, parse_and_run, argc, argv);
}
