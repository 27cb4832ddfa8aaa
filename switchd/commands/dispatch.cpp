#include "commands/dispatch.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "commands/command.h"
#include "wire/message.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

struct CommandEntry {
  stp_command command;
  cmd_result (*answer)(const Switch &, const CommandRequest &, ReplyBuilder *);
};

constexpr auto kCommands =
    std::to_array<CommandEntry>({{STP_COMMAND_GLOBAL_SETTINGS, answer_global_settings},
                                 {STP_COMMAND_RAPID_PVST_PORTS, answer_rapid_pvst_ports},
                                 {STP_COMMAND_MST_PORTS, answer_mst_ports},
                                 {STP_COMMAND_MST_REGION, answer_mst_region},
                                 {STP_COMMAND_VLAN_TREES, answer_vlan_trees},
                                 {STP_COMMAND_PORT_INCONSISTENCIES, answer_pvid_and_type_inconsistencies},
                                 {STP_COMMAND_ROOT_GUARD, answer_root_guard},
                                 {STP_COMMAND_LOOP_GUARD, answer_loop_guard},
                                 {STP_COMMAND_PORT_SETTINGS, answer_port_settings},
                                 {STP_COMMAND_ROOT_INCONSISTENCIES, answer_root_inconsistencies},
                                 {STP_COMMAND_LOOP_INCONSISTENCIES, answer_loop_inconsistencies},
                                 {STP_COMMAND_MST_INSTANCES, answer_mst_instances}});

bool head_is_well_formed(const wire::Request &request, size_t size) {
  return request.header.version == wire::kVersion &&
         request.header.type == static_cast<uint16_t>(wire::MessageType::kRequest) &&
         request.header.length == size &&
         std::find(std::begin(request.user), std::end(request.user), '\0') != std::end(request.user);
}

bool is_addressed_here(const wire::Request &request) {
  return request.destination == STP_DESTINATION && request.service == STP_SERVICE &&
         (request.action == CMD_ACTION_GET || request.action == CMD_ACTION_GET_NEXT) && request.flags == 0;
}

std::vector<wire::Attribute> read_attributes(std::span<const uint8_t> octets) {
  std::vector<wire::Attribute> attributes;
  wire::AttributeReader reader(octets.data(), octets.size());
  for (wire::Attribute attribute; reader.next(&attribute);) {
    attributes.push_back(attribute);
  }
  return attributes;
}

bool is_refused(const Switch &the_switch, std::string_view user) {
  const auto &refused = the_switch.state().access.refused_users;
  return std::find(refused.begin(), refused.end(), user) != refused.end();
}

cmd_result answer_request(const Switch &the_switch, std::span<const uint8_t> packet, size_t sent_size,
                          ReplyBuilder *reply) {
  wire::Request request;
  if (sent_size != packet.size() || packet.size() < sizeof request) {
    return CMD_BAD_REQUEST;
  }
  std::memcpy(&request, packet.data(), sizeof request);
  const auto attributes = packet.subspan(sizeof request);
  if (!head_is_well_formed(request, packet.size()) || !is_addressed_here(request) ||
      !wire::attributes_are_well_formed(attributes.data(), attributes.size(), request.attribute_count)) {
    return CMD_BAD_REQUEST;
  }
  if (is_refused(the_switch, request.user)) {
    return CMD_REFUSED;
  }
  const auto *const entry = std::find_if(kCommands.begin(), kCommands.end(), [&request](const auto &known) {
    return known.command == request.command;
  });
  if (entry == kCommands.end()) {
    return CMD_UNKNOWN_COMMAND;
  }
  const CommandRequest command{static_cast<cmd_action>(request.action), read_attributes(attributes)};
  return entry->answer(the_switch, command, reply);
}

}  // namespace

std::optional<Packet> answer_packet(const Switch &the_switch, std::span<const uint8_t> packet,
                                    size_t sent_size) {
  wire::MessageHeader header;
  if (packet.size() < sizeof header) {
    return std::nullopt;
  }
  std::memcpy(&header, packet.data(), sizeof header);
  if (header.magic != wire::kMagic) {
    return std::nullopt;
  }
  ReplyBuilder reply;
  const cmd_result status = answer_request(the_switch, packet, sent_size, &reply);
  return std::move(reply).finish(header.sequence, status);
}

}  // namespace stpswitch
