// The stream of octets that Open vSwitch's database sends: rows from whatever it says, and the state of
// bridges from these.
#include <iterator>
#include <string>
#include <vector>

#include "model/switch.h"
#include "sources/openvswitch/bridge_state.h"
#include "sources/openvswitch/ovsdb_rows.h"
#include "support/input.h"
#include "support/ovsdb_rows.h"
#include "support/publication.h"

using namespace stpswitch;

namespace {

// A switch with one tree, and one with the trees of two VLANs.
const std::vector<WatchedBridge> &any_bridges(uint8_t choice) {
  static const std::vector<WatchedBridge> bridges[] = {{{"br0", {}}}, {{"br1", 1}, {"br0", 4094}}};
  return bridges[choice % std::size(bridges)];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const std::vector<WatchedBridge> &bridges = any_bridges(input.number<uint8_t>());
  OvsdbRows rows;
  update_rows_from_stream(&rows, std::string(fuzz::text_of(input.rest())));
  status_interval(rows);
  BridgesReading reading = read_bridges(rows, bridges);
  for (const std::string &line : reading.left_out) {
    fuzz::require_printable(line);
  }
  for (const std::string &line : reading.without_tree) {
    fuzz::require_printable(line);
  }
  Switch the_switch(std::move(reading.state));
  fuzz::require_image(the_switch);
  fuzz::require_overview(&the_switch);
  return 0;
}
