#include "sources/linux_bridge/link_message.h"

#include <libmnl/libmnl.h>
#include <linux/if.h>
#include <linux/if_bridge.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>

#include <cstring>

#include "sources/linux_bridge/netlink_attributes.h"

namespace stpswitch {
namespace {

constexpr unsigned kOctetBits = 8;

std::optional<bool> flag_of(const nlattr &attribute) {
  const auto number = number_of<uint8_t>(attribute);
  return number ? std::optional(*number != 0) : std::nullopt;
}

// A name or a kind: not empty, and as short as the names of interfaces are.
std::optional<std::string> text_of(const nlattr &attribute) {
  const Octets octets = octets_of(attribute);
  const void *const begin = octets.data();
  const auto *const text = static_cast<const char *>(begin);
  const size_t length = strnlen(text, octets.size());
  return length > 0 && length < IFNAMSIZ ? std::optional(std::string(text, length)) : std::nullopt;
}

std::optional<BridgeId> bridge_id_of(const nlattr &attribute) {
  const auto stated = number_of<ifla_bridge_id>(attribute);
  if (!stated) {
    return std::nullopt;
  }
  BridgeId id{static_cast<uint16_t>(stated->prio[0] << kOctetBits | stated->prio[1]), {}};
  static_assert(sizeof stated->addr == sizeof id.address);
  std::memcpy(id.address.data(), stated->addr, sizeof stated->addr);
  return id;
}

std::optional<StpState> stp_state_of(const nlattr &attribute) {
  const auto number = number_of<uint32_t>(attribute);
  if (!number || *number > static_cast<uint32_t>(StpState::kUserSpace)) {
    return std::nullopt;
  }
  return static_cast<StpState>(*number);
}

std::optional<PortState> port_state_of(const nlattr &attribute) {
  const auto number = number_of<uint8_t>(attribute);
  if (!number) {
    return std::nullopt;
  }
  switch (*number) {
    case BR_STATE_DISABLED:
      return PortState::kDisabled;
    case BR_STATE_BLOCKING:
      return PortState::kBlocking;
    case BR_STATE_LISTENING:
      return PortState::kListening;
    case BR_STATE_LEARNING:
      return PortState::kLearning;
    case BR_STATE_FORWARDING:
      return PortState::kForwarding;
    default:
      return std::nullopt;
  }
}

void read_bridge_attribute(const nlattr &attribute, BridgeAttributes *bridge) {
  switch (mnl_attr_get_type(&attribute)) {
    case IFLA_BR_STP_STATE:
      bridge->stp_state = stp_state_of(attribute);
      break;
    case IFLA_BR_PRIORITY:
      bridge->priority = number_of<uint16_t>(attribute);
      break;
    case IFLA_BR_BRIDGE_ID:
      bridge->bridge_id = bridge_id_of(attribute);
      break;
    case IFLA_BR_ROOT_ID:
      bridge->root_id = bridge_id_of(attribute);
      break;
    case IFLA_BR_ROOT_PATH_COST:
      bridge->root_path_cost = number_of<uint32_t>(attribute);
      break;
    case IFLA_BR_ROOT_PORT:
      bridge->root_port = number_of<uint16_t>(attribute);
      break;
    case IFLA_BR_MAX_AGE:
      bridge->max_age = number_of<uint32_t>(attribute);
      break;
    case IFLA_BR_HELLO_TIME:
      bridge->hello_time = number_of<uint32_t>(attribute);
      break;
    case IFLA_BR_FORWARD_DELAY:
      bridge->forward_delay = number_of<uint32_t>(attribute);
      break;
    case IFLA_BR_TOPOLOGY_CHANGE:
      bridge->topology_change = flag_of(attribute);
      break;
    case IFLA_BR_TOPOLOGY_CHANGE_DETECTED:
      bridge->topology_change_detected = flag_of(attribute);
      break;
    case IFLA_BR_VLAN_FILTERING:
      bridge->vlan_filtering = flag_of(attribute);
      break;
    default:
      break;
  }
}

BridgeAttributes bridge_attributes_of(Octets octets) {
  BridgeAttributes bridge;
  for_each_attribute(octets,
                     [&bridge](const nlattr &attribute) { read_bridge_attribute(attribute, &bridge); });
  return bridge;
}

void read_bridge_port_attribute(const nlattr &attribute, BridgePortAttributes *port) {
  switch (mnl_attr_get_type(&attribute)) {
    case IFLA_BRPORT_NO:
      port->number = number_of<uint16_t>(attribute);
      break;
    case IFLA_BRPORT_ID:
      port->port_id = number_of<uint16_t>(attribute);
      break;
    case IFLA_BRPORT_STATE:
      port->state = port_state_of(attribute);
      break;
    case IFLA_BRPORT_PRIORITY:
      port->priority = number_of<uint16_t>(attribute);
      break;
    case IFLA_BRPORT_COST:
      port->path_cost = number_of<uint32_t>(attribute);
      break;
    case IFLA_BRPORT_PROTECT:
      port->root_block = flag_of(attribute);
      break;
    case IFLA_BRPORT_ROOT_ID:
      port->designated_root = bridge_id_of(attribute);
      break;
    case IFLA_BRPORT_BRIDGE_ID:
      port->designated_bridge = bridge_id_of(attribute);
      break;
    case IFLA_BRPORT_DESIGNATED_COST:
      port->designated_cost = number_of<uint16_t>(attribute);
      break;
    case IFLA_BRPORT_DESIGNATED_PORT:
      port->designated_port = number_of<uint16_t>(attribute);
      break;
    case IFLA_BRPORT_MESSAGE_AGE_TIMER:
      port->message_age_timer = number_of<uint64_t>(attribute);
      break;
    default:
      break;
  }
}

BridgePortAttributes bridge_port_attributes_of(Octets octets) {
  BridgePortAttributes port;
  for_each_attribute(octets,
                     [&port](const nlattr &attribute) { read_bridge_port_attribute(attribute, &port); });
  return port;
}

std::optional<bool> mii_link_of(Octets octets) {
  // What the bonding driver calls BOND_LINK_UP.
  constexpr uint8_t kLinkUp = 0;
  std::optional<bool> link;
  for_each_attribute(octets, [&link](const nlattr &attribute) {
    if (mnl_attr_get_type(&attribute) == IFLA_BOND_SLAVE_MII_STATUS) {
      const auto status = number_of<uint8_t>(attribute);
      link = status ? std::optional(*status == kLinkUp) : std::nullopt;
    }
  });
  return link;
}

// What kind of link it is, what kind of port or member of another, and what the kinds tell.
void read_link_info(Octets octets, Link *link) {
  std::optional<std::string> member_kind;
  Octets data;
  Octets member_data;
  for_each_attribute(octets, [&](const nlattr &attribute) {
    switch (mnl_attr_get_type(&attribute)) {
      case IFLA_INFO_KIND:
        link->kind = text_of(attribute);
        break;
      case IFLA_INFO_DATA:
        data = octets_of(attribute);
        break;
      case IFLA_INFO_SLAVE_KIND:
        member_kind = text_of(attribute);
        break;
      case IFLA_INFO_SLAVE_DATA:
        member_data = octets_of(attribute);
        break;
      default:
        break;
    }
  });
  if (link->kind == "bridge") {
    link->bridge = bridge_attributes_of(data);
  }
  if (member_kind == "bridge") {
    link->bridge_port = bridge_port_attributes_of(member_data);
  } else if (member_kind == "bond") {
    link->mii_link = mii_link_of(member_data);
  }
}

// The kernel tells VLANs one by one, or the first and the last of a range in two attributes.
VlanSet vlans_of(Octets octets) {
  VlanSet vlans;
  uint32_t first_of_range = 0;  // 0: none has begun
  for_each_attribute(octets, [&](const nlattr &attribute) {
    const auto info = mnl_attr_get_type(&attribute) == IFLA_BRIDGE_VLAN_INFO
                          ? number_of<bridge_vlan_info>(attribute)
                          : std::nullopt;
    if (!info || info->vid < kMinVlan || info->vid > kMaxVlan) {
      return;
    }
    if ((info->flags & BRIDGE_VLAN_INFO_RANGE_BEGIN) != 0) {
      first_of_range = info->vid;
      return;
    }
    const bool ends_range = (info->flags & BRIDGE_VLAN_INFO_RANGE_END) != 0 && first_of_range != 0;
    for (uint32_t vlan = ends_range ? first_of_range : info->vid; vlan <= info->vid; ++vlan) {
      vlans.insert(vlan);
    }
    first_of_range = 0;
  });
  return vlans;
}

void read_attribute(const nlattr &attribute, bool is_of_bridge, Link *link) {
  switch (mnl_attr_get_type(&attribute)) {
    case IFLA_IFNAME:
      link->name = text_of(attribute);
      break;
    case IFLA_MASTER:
      link->master = number_of<uint32_t>(attribute);
      break;
    case IFLA_LINKINFO:
      read_link_info(octets_of(attribute), link);
      break;
    case IFLA_PROTINFO:
      if (is_of_bridge) {
        link->bridge_port = bridge_port_attributes_of(octets_of(attribute));
      }
      break;
    case IFLA_AF_SPEC:
      if (is_of_bridge) {
        link->vlans = vlans_of(octets_of(attribute));
      }
      break;
    default:
      break;
  }
}

}  // namespace

std::optional<LinkMessage> parse_link_message(const nlmsghdr &message) {
  const bool is_gone = message.nlmsg_type == RTM_DELLINK;
  if ((!is_gone && message.nlmsg_type != RTM_NEWLINK) ||
      message.nlmsg_len < mnl_nlmsg_size(sizeof(ifinfomsg))) {
    return std::nullopt;
  }
  const Octets octets(static_cast<const uint8_t *>(mnl_nlmsg_get_payload(&message)),
                      mnl_nlmsg_get_payload_len(&message));
  ifinfomsg head{};
  std::memcpy(&head, octets.data(), sizeof head);
  const bool is_of_bridge = head.ifi_family == AF_BRIDGE;
  if (head.ifi_index <= 0 || (!is_of_bridge && head.ifi_family != AF_UNSPEC)) {
    return std::nullopt;
  }
  LinkMessage parsed{is_of_bridge, is_gone, {}};
  parsed.link.if_index = static_cast<uint32_t>(head.ifi_index);
  parsed.link.has_link = (head.ifi_flags & IFF_LOWER_UP) != 0;
  static_assert(sizeof head % NLMSG_ALIGNTO == 0, "attributes follow at once");
  for_each_attribute(octets.subspan(sizeof head),
                     [&](const nlattr &attribute) { read_attribute(attribute, is_of_bridge, &parsed.link); });
  return parsed;
}

}  // namespace stpswitch
