#include "instant_switch.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "platform/agent_ext.h"
#include "platform/im.h"
#include "platform/pcm.h"
#include "platform/stp_protocol.h"
#include "platform/vlan_mgr.h"

namespace {

using instant::kInstances;
using instant::kPorts;
using instant::kVlans;

// Interface indexes and bridge port numbers are these and the port's number, from 1.
constexpr uint32_t kInterfaces = 0x1A000000;
constexpr uint32_t kBasePorts = 128;

constexpr uint32_t kOctetBits = 8;
constexpr uint32_t kFirstBit = 0x80;

uint32_t mode = STP_MODE_RAPID_PVST;

// A place in the order of the entries; of tables without trees, or without ports, one of the two is 0.
struct Place {
  uint32_t tree;
  uint32_t port;
};

struct Request {
  uint32_t command;
  uint32_t action;
  Place place;
  bool has_tree;
  bool has_port;
};

// The module reads one reply at a time.
struct {
  uint32_t tree;
  uint32_t if_index;
  bool is_inconsistent;
} reply;

struct Trees {
  uint32_t first;
  uint32_t last;
};

Trees trees() { return mode == STP_MODE_MST ? Trees{0, kInstances} : Trees{1, kVlans}; }

uint32_t port_of(uint32_t if_index) {
  if (if_index < kInterfaces) {
    return 0;
  }
  return std::min(if_index - kInterfaces, kPorts + 1);
}

bool is_port(uint32_t port) { return port >= 1 && port <= kPorts; }
bool is_tree(uint32_t tree) { return tree >= trees().first && tree <= trees().last; }

// Moves to the place behind this one, or to the first one. False where there is none.
bool step(const Request &request, Place *place) {
  if (!request.has_tree) {
    return ++place->port <= kPorts;
  }
  if (!request.has_port) {
    place->tree = std::max(place->tree + 1, trees().first);
    return is_tree(place->tree);
  }
  if (place->tree < trees().first) {
    *place = {trees().first, 0};
  }
  if (++place->port > kPorts) {
    *place = {place->tree + 1, 1};
  }
  return is_tree(place->tree);
}

bool is_inconsistency(uint32_t command) {
  return command == STP_COMMAND_PORT_INCONSISTENCIES || command == STP_COMMAND_ROOT_INCONSISTENCIES ||
         command == STP_COMMAND_LOOP_INCONSISTENCIES;
}

cmd_result find(const Request &request, Place *place) {
  if (request.action == CMD_ACTION_GET_NEXT) {
    // Behind a tree that does not exist there is no entry.
    const bool is_nowhere = request.has_tree && request.has_port && place->port == 0 && !is_tree(place->tree);
    return !is_nowhere && step(request, place) ? CMD_OK : CMD_NO_ENTRY;
  }
  const bool is_there =
      (!request.has_tree || is_tree(place->tree)) && (!request.has_port || is_port(place->port));
  return is_there ? CMD_OK : CMD_NO_ENTRY;
}

uint32_t answer_of(uint32_t token) {
  constexpr uint32_t kAnything = 1;
  switch (token) {
    case STP_ATTRIBUTE_TREE:
    case STP_ATTRIBUTE_PORT_TREE:
      return reply.tree;
    case STP_ATTRIBUTE_INTERFACE:
      return reply.if_index;
    case STP_ATTRIBUTE_MODE:
      return mode;
    default:
      return kAnything;
  }
}

}  // namespace

void instant::set_mode(uint32_t new_mode) { mode = new_mode; }

// Command library.

void *cmd_req_init(void *buffer, uint32_t) {
  *static_cast<Request *>(buffer) = {};
  return buffer;
}

int cmd_req_cmdId_set(void *request, uint32_t command) {
  static_cast<Request *>(request)->command = command;
  return 0;
}

int cmd_req_action_set(void *request, uint32_t action) {
  static_cast<Request *>(request)->action = action;
  return 0;
}

uint32_t token_type_2len(uint32_t token, const void *) {
  return CMD_TOKEN_TYPE(token) == CMD_TYPE_RANGE_LIST ? sizeof(cmd_range_list) + sizeof(cmd_range)
                                                      : sizeof(uint32_t);
}

int cmd_req_attr_add(void *request, uint32_t token, const void *value, uint32_t) {
  auto *asked = static_cast<Request *>(request);
  if (CMD_TOKEN_TYPE(token) == CMD_TYPE_RANGE_LIST) {
    cmd_range tree;
    std::memcpy(&tree, static_cast<const uint8_t *>(value) + sizeof(cmd_range_list), sizeof tree);
    asked->place.tree = tree.first;
    asked->has_tree = true;
  } else if (CMD_TOKEN_TYPE(token) == CMD_TYPE_IF_INDEX) {
    uint32_t if_index;
    std::memcpy(&if_index, value, sizeof if_index);
    asked->place.port = port_of(if_index);
    asked->has_port = true;
  }
  return 0;
}

int cmd_snmp_req_send_recv(uint32_t, uint32_t, void *request, const char *, uint32_t, void **answer,
                           uint32_t) {
  const auto &asked = *static_cast<const Request *>(request);
  Place place = asked.place;
  const cmd_result result = find(asked, &place);
  if (result == CMD_OK) {
    reply = {place.tree, kInterfaces + place.port, is_inconsistency(asked.command)};
    *answer = &reply;
  }
  return result;
}

int cmd_rsp_attr_get(void *, uint32_t token, void **value, uint32_t *length) {
  static uint8_t mac_address[] = {0x02, 0, 0, 0, 0, 1};
  static uint32_t number;
  if (token == STP_ATTRIBUTE_INCONSISTENCY && !reply.is_inconsistent) {
    return CMD_NO_ATTRIBUTE;
  }
  if (CMD_TOKEN_TYPE(token) == CMD_TYPE_MAC) {
    *value = mac_address;
    *length = sizeof mac_address;
    return 0;
  }
  number = answer_of(token);
  *value = &number;
  *length = sizeof number;
  return 0;
}

void cmd_snmp_free_rx_hndl(void *) {}

const char *get_snmp_username(int) { return "operator"; }
uint32_t get_snmp_sessionid(int) { return 1; }

// Managers.

int im_get_next_ifindex(uint32_t if_index, uint32_t *next) {
  const uint32_t port = if_index == 0 ? 1 : port_of(if_index) + 1;
  *next = is_port(port) ? kInterfaces + port : 0;
  return 0;
}

int im_get_ifindex_oper_status_list(im_oper_status_entry *entries, uint32_t) {
  entries->oper_status = IF_OPER_UP;
  return 0;
}

int if_index_get_type(uint32_t, uint8_t *type) {
  *type = IF_TYPE_PHYSICAL;
  return 0;
}

int check_if_valid_base_port_ifindex(uint32_t, uint8_t) { return 1; }

int pcm_get_pc_for_port(uint32_t if_index, pcm_port_channel *record) {
  *record = {0, if_index, 0};
  return 0;
}

vlan_mgr_baseport_bmp *vlan_mgr_get_baseport_membership_range(const stp_vlan_bmp *) {
  auto *members = static_cast<vlan_mgr_baseport_bmp *>(std::calloc(1, sizeof(vlan_mgr_baseport_bmp)));
  if (members == nullptr) {
    return nullptr;
  }
  members->size = BASEPORT_BITMAP_SIZE;
  for (uint32_t port = kBasePorts + 1; port <= kBasePorts + kPorts; ++port) {
    members->bits[port / kOctetBits] |= static_cast<uint8_t>(kFirstBit >> (port % kOctetBits));
  }
  return members;
}

int stp_ifindex2dot1dportnum(uint32_t if_index, uint16_t *port) {
  *port = static_cast<uint16_t>(kBasePorts + port_of(if_index));
  return is_port(port_of(if_index)) ? 0 : CMD_NO_ENTRY;
}

int stp_dot1dportnum2ifindex(uint16_t port, uint32_t *if_index) {
  if (!is_port(port - kBasePorts)) {
    return CMD_NO_ENTRY;
  }
  *if_index = kInterfaces + port - kBasePorts;
  return 0;
}

int stp_valid_if_index(uint32_t if_index) { return is_port(port_of(if_index)) ? 1 : 0; }

int stp_get_mst_vlan_bmp(void *, uint32_t action, uint16_t *instance, stp_vlan_bmp *vlans) {
  const uint32_t found = *instance + (action == CMD_ACTION_GET_NEXT ? 1U : 0U);
  if (found > kInstances) {
    return CMD_NO_ENTRY;
  }
  *instance = static_cast<uint16_t>(found);
  return stp_dot1d_bridgemib_get_mst_ctx(*instance, vlans);
}

int stp_dot1d_bridgemib_get_mst_ctx(uint16_t instance, stp_vlan_bmp *vlans) {
  *vlans = {STP_VLAN_BITMAP_SIZE, {}};
  vlans->bits[instance / kOctetBits] = static_cast<uint8_t>(kFirstBit >> (instance % kOctetBits));
  return 0;
}
