#include "sources/linux_bridge/stp_statistics.h"

#include <libmnl/libmnl.h>
#include <linux/if_bridge.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>

#include <cstring>

#include "sources/linux_bridge/netlink_attributes.h"

namespace stpswitch {
namespace {

// What is in the attribute of that type; nothing where there is none.
Octets inside(Octets attributes, uint16_t type) {
  Octets found;
  for_each_attribute(attributes, [type, &found](const nlattr &attribute) {
    if (mnl_attr_get_type(&attribute) == type) {
      found = octets_of(attribute);
    }
  });
  return found;
}

}  // namespace

std::optional<uint64_t> parse_forward_transitions(const nlmsghdr &message) {
  if (message.nlmsg_type != RTM_NEWSTATS || message.nlmsg_len < mnl_nlmsg_size(sizeof(if_stats_msg))) {
    return std::nullopt;
  }
  static_assert(sizeof(if_stats_msg) % NLMSG_ALIGNTO == 0, "attributes follow at once");
  const Octets attributes = Octets(static_cast<const uint8_t *>(mnl_nlmsg_get_payload(&message)),
                                   mnl_nlmsg_get_payload_len(&message))
                                .subspan(sizeof(if_stats_msg));
  const Octets of_port = inside(attributes, IFLA_STATS_LINK_XSTATS_SLAVE);
  const Octets counted = inside(inside(of_port, LINK_XSTATS_TYPE_BRIDGE), BRIDGE_XSTATS_STP);
  // A later kernel may have counted more, which follows.
  bridge_stp_xstats statistics{};
  if (counted.size() < sizeof statistics) {
    return std::nullopt;
  }
  std::memcpy(&statistics, counted.data(), sizeof statistics);
  return statistics.transition_fwd;
}

}  // namespace stpswitch
