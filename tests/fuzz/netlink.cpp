// Datagrams of the kernel about links: the state of a bridge from whatever they say. The first message of a
// datagram may be of the bridge, of its ports, of members or of VLANs, as the source asks for them one after
// the other; the others are notifications.
#include <chrono>
#include <vector>

#include "model/switch.h"
#include "sources/linux_bridge/bridge_history.h"
#include "sources/linux_bridge/bridge_state.h"
#include "sources/linux_bridge/link_table.h"
#include "sources/linux_bridge/netlink_socket.h"
#include "sources/linux_bridge/stp_statistics.h"
#include "support/input.h"
#include "support/publication.h"

using namespace stpswitch;

namespace {

constexpr TickRates kTickRates{100, 250};

std::vector<Link> links_in(const std::vector<uint8_t> &datagram) {
  std::vector<Link> links;
  for_each_message(datagram, [&links](const nlmsghdr &message) {
    if (auto parsed = parse_link_message(message)) {
      links.push_back(std::move(parsed->link));
    }
  });
  return links;
}

// Seconds after the one before, as long as there is anything.
void see_notifications(fuzz::Input *input, const LinkTable &table, BridgeHistory *history,
                       BridgeHistory::Time *now) {
  while (!input->is_over()) {
    *now += std::chrono::seconds(input->number<uint8_t>());
    for_each_message(input->long_octets(), [&](const nlmsghdr &message) {
      if (const auto parsed = parse_link_message(message); parsed && concerns(*parsed, table)) {
        history->see_port(parsed->link, *now);
      }
    });
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const std::vector<Link> bridge = links_in(input.long_octets());
  if (bridge.empty() || !is_bridge(bridge.front())) {
    return 0;
  }
  LinkTable table = make_table(bridge.front(), links_in(input.long_octets()));
  const std::vector<Link> members = links_in(input.long_octets());
  for (auto &[if_index, port] : table.ports) {
    if (is_port_channel(port)) {
      table.members[if_index] = members;
    }
  }
  add_vlans(links_in(input.long_octets()), &table);
  for_each_message(input.long_octets(), [&table](const nlmsghdr &message) {
    const auto transitions = parse_forward_transitions(message);
    for (auto &[if_index, port] : table.ports) {
      port.forward_transitions = transitions;
    }
  });
  if (runs_kernel_stp(table.bridge) && !is_root(table.bridge)) {
    table.own_timers = {input.number<uint32_t>(), input.number<uint32_t>(), input.number<uint32_t>()};
  }

  BridgeHistory history;
  BridgeHistory::Time now;
  history.see_bridge(table.bridge, now);
  history.see_ports(table, now);
  see_notifications(&input, table, &history, &now);
  const auto max_age =
      duration_of(table.bridge.bridge ? table.bridge.bridge->max_age.value_or(0) : 0, kTickRates.user);
  Switch the_switch(bridge_state(table, history.facts(max_age, now), kTickRates).state);
  fuzz::require_image(the_switch);
  fuzz::require_overview(&the_switch);
  return 0;
}
