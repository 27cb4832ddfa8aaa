#include "support/any_platform.h"

#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>

#include <algorithm>
#include <iterator>

#include "fake_platform.h"
#include "platform/cmd.h"
#include "platform/im.h"
#include "platform/stp_protocol.h"
#include "protocol_numbers.h"
#include "support/require.h"
#include "wire/attributes.h"

namespace wire = stpplatform::wire;

namespace fuzz {
namespace {

using namespace protocol;  // NOLINT(google-build-using-namespace): a table of numbers

constexpr uint32_t kTokens[] = {kInterface,
                                kTree,
                                kPortTree,
                                kMode,
                                kPathCostMethod,
                                kPathCostOperMethod,
                                kLoopGuardDefault,
                                kHops,
                                kMstRegionName,
                                kMstRegionRevision,
                                kMstConfigDigest,
                                kMstPreStandardDigest,
                                kVlanTreeState,
                                kRegionalRootMac,
                                kRegionalRootPriority,
                                kInternalRootPathCost,
                                kGuard,
                                kLinkType,
                                kPointToPoint,
                                kPreStandardMst,
                                kPathCost,
                                kPortRole,
                                kEdge,
                                kBoundary,
                                kPeer,
                                kDispute,
                                STP_ATTRIBUTE_PRE_STANDARD_PEER,
                                kInconsistency,
                                kBridgePriority,
                                kBridgeMac,
                                kRootPriority,
                                kRootMac,
                                kRootCost,
                                kRootPort,
                                kMaxAge,
                                kHelloTime,
                                kForwardDelay,
                                kBridgeMaxAge,
                                kBridgeHelloTime,
                                kBridgeForwardDelay,
                                kTxHoldCount,
                                kProtocolVersion,
                                kTopologyChanges,
                                kTopologyAge,
                                kBridgePortCount,
                                kBridgePort,
                                kIfMibIndex,
                                kPortPriority,
                                kPortState,
                                kDesignatedRootPriority,
                                kDesignatedRootMac,
                                kDesignatedCost,
                                kDesignatedBridgePriority,
                                kDesignatedBridgeMac,
                                kDesignatedPort,
                                kForwardTransitions,
                                kAdminEdge};

fake::Send next_answer(Input *input) {
  if (input->is_over()) {
    return {CMD_NO_ENTRY, false};
  }
  // Which code it fails with, or how many attributes there are.
  constexpr uint8_t kFailure = 0x80;
  const auto kind = input->number<uint8_t>();
  if ((kind & kFailure) != 0) {
    return {kind ^ kFailure, false};
  }
  fake::Attributes attributes;
  for (uint8_t left = kind; left > 0 && !input->is_over(); --left) {
    const uint32_t token = kTokens[input->number<uint8_t>() % std::size(kTokens)];
    const uint32_t length = wire::fixed_length(token);
    fake::Bytes value = length != 0 ? input->octets(length) : input->short_octets();
    value.resize(length != 0 ? length : value.size());
    attributes[token] = value;
  }
  return {CMD_OK, true, attributes};
}

std::vector<uint32_t> any_vlans(Input *input) {
  constexpr uint16_t kVlans = 4096;
  constexpr uint8_t kMost = 4;
  std::vector<uint32_t> vlans;
  for (uint8_t left = input->number<uint8_t>() % kMost; left > 0; --left) {
    vlans.push_back(input->number<uint16_t>() % kVlans);
  }
  return vlans;
}

// Mostly such as there can be, and at most once: whoever enumerates them comes to an end.
std::vector<fake::Interface> any_interfaces(Input *input) {
  enum Kind : uint8_t {
    kUnusable = 1,
    kNoBasePort = 2,
    kOneWay = 4,
    kDown = 8,
    kNoStatus = 16,
    kOtherType = 32,
    kMember = 64,
    kChannel = 128
  };
  constexpr uint8_t kMost = 6;
  std::vector<fake::Interface> interfaces;
  uint32_t if_index = 0;
  for (uint8_t left = input->number<uint8_t>() % kMost; left > 0; --left) {
    const auto kind = input->number<uint8_t>();
    const bool is_channel = (kind & kChannel) != 0;
    if_index += 1U + input->number<uint8_t>();
    const uint8_t type = is_channel ? IF_TYPE_PORT_CHANNEL : IF_TYPE_PHYSICAL;
    interfaces.push_back(
        {.if_index = (uint32_t{type} << 24) + if_index,
         .port = input->number<uint16_t>(),
         .type = (kind & kOtherType) != 0 ? input->number<uint8_t>() : type,
         .is_usable = (kind & kUnusable) == 0,
         .is_base_port = (kind & kNoBasePort) == 0,
         .has_if_index_of_port = (kind & kOneWay) == 0,
         .oper_status = static_cast<uint8_t>((kind & kDown) != 0 ? IF_OPER_DOWN : IF_OPER_UP),
         .has_oper_status = (kind & kNoStatus) == 0,
         .channel_if_index = (kind & kMember) != 0 ? input->number<uint32_t>() : 0,
         .vlans = any_vlans(input)});
  }
  return interfaces;
}

}  // namespace

void set_up_platform(Input *input) {
  constexpr int64_t kDay = 86'400;
  static int64_t now = 0;
  fake::reset();
  fake::Platform &platform = fake::platform();
  platform.writes_trace = false;
  // What the module has kept of the switch before is too old to count.
  now += kDay;
  platform.clock = now;
  platform.interfaces = any_interfaces(input);
  for (const uint32_t instance : any_vlans(input)) {
    platform.mst_contexts[static_cast<uint16_t>(instance)] = any_vlans(input);
  }
  platform.mst_vlans.vlans = any_vlans(input);
  platform.mst_vlans.result = input->number<uint8_t>() % 2;
  platform.answer = [input](const fake::Request & /*request*/) { return next_answer(input); };
}

void set_context(Input *input) {
  const std::vector<uint8_t> context = input->octets(input->number<uint8_t>() % (AND_CONTEXT_NAME_MAX + 1U));
  std::copy(context.begin(), context.end(), and_context_name);
  and_context_name[context.size()] = '\0';
  and_context_name_len = static_cast<uint32_t>(context.size());
}

void notify(Input *input, notification_handler handler) {
  fake::Bytes payload = input->octets(sizeof(stp_inconsistency_payload));
  payload.resize(sizeof(stp_inconsistency_payload));
  payload.shrink_to_fit();
  fake::platform().payload = payload;
  int message = 0;
  oid trap[MAX_OID_LEN] = {};
  size_t trap_length = 0;
  int status = 0;
  netsnmp_variable_list *const bindings = handler(&message, trap, &trap_length, &status);
  require(trap_length <= MAX_OID_LEN, "a name is no longer than names are");
  snmp_free_varbind(bindings);
}

std::vector<oid> any_arcs(Input *input) {
  constexpr uint8_t kMost = 16;
  std::vector<oid> arcs;
  for (uint8_t left = input->number<uint8_t>() % kMost; left > 0; --left) {
    arcs.push_back(input->number<uint32_t>());
  }
  return arcs;
}

}  // namespace fuzz
