#include "objects.h"

#include <algorithm>
#include <iterator>

namespace stpbridge {
namespace {

constexpr uint32_t kTransparentOnly = 2;  // dot1dBaseType: no source routing
constexpr uint32_t kIeee8021d = 3;        // dot1dStpProtocolSpecification

// In hundredths of a second. IEEE 802.1D-1998 fixes Hold Time at one second (table 8-3), and later editions
// count what may be sent within one (clause 17.13.12).
constexpr uint32_t kHoldTime = 100;

constexpr Object scalar(oid group, oid object, Read read) {
  return {kScalarArcs, {group, object, 0, 0}, read};
}

constexpr oid kEntry = 1;

constexpr Object base_port(oid column, Read read) {
  constexpr oid kTable = 4;
  return {kColumnArcs, {kBaseGroup, kTable, kEntry, column}, read};
}

constexpr Object stp_port(oid column, Read read) {
  constexpr oid kTable = 15;
  return {kColumnArcs, {kStpGroup, kTable, kEntry, column}, read};
}

constexpr Object rstp_port(oid column, Read read) {
  constexpr oid kTable = 19;
  return {kColumnArcs, {kStpGroup, kTable, kEntry, column}, read};
}

constexpr Object kObjects[] = {
    // dot1dBase
    scalar(kBaseGroup, 1, read_bridge_address),                           // dot1dBaseBridgeAddress
    scalar(kBaseGroup, 2, read_number<STP_ATTRIBUTE_BRIDGE_PORT_COUNT>),  // dot1dBaseNumPorts
    scalar(kBaseGroup, 3, read_constant<kTransparentOnly>),               // dot1dBaseType

    // dot1dBasePortTable
    base_port(1, read_number<STP_ATTRIBUTE_BRIDGE_PORT>),              // dot1dBasePort
    base_port(2, read_number<STP_ATTRIBUTE_IF_MIB_INDEX, kPositive>),  // dot1dBasePortIfIndex
    base_port(3, read_no_circuit),                                     // dot1dBasePortCircuit
    base_port(4, nullptr),                                             // dot1dBasePortDelayExceededDiscards
    base_port(5, nullptr),                                             // dot1dBasePortMtuExceededDiscards

    // dot1dStp
    scalar(kStpGroup, 1, read_constant<kIeee8021d>),                               // ProtocolSpecification
    scalar(kStpGroup, 2, read_number<STP_ATTRIBUTE_BRIDGE_PRIORITY, kTwoOctets>),  // Priority
    scalar(kStpGroup, 3,
           read_number<STP_ATTRIBUTE_TOPOLOGY_AGE, kAny, ASN_TIMETICKS>),  // TimeSinceTopologyChange
    scalar(kStpGroup, 4, read_number<STP_ATTRIBUTE_TOPOLOGY_CHANGES, kAny, ASN_COUNTER>),  // TopChanges
    scalar(kStpGroup, 5,
           read_identifier<STP_ATTRIBUTE_ROOT_PRIORITY, STP_ATTRIBUTE_ROOT_MAC>),  // DesignatedRoot
    scalar(kStpGroup, 6, read_number<STP_ATTRIBUTE_ROOT_COST>),                    // RootCost
    scalar(kStpGroup, 7, read_number<STP_ATTRIBUTE_ROOT_PORT, kTwoOctets>),        // RootPort
    scalar(kStpGroup, 8, read_number<STP_ATTRIBUTE_MAX_AGE>),                      // MaxAge
    scalar(kStpGroup, 9, read_number<STP_ATTRIBUTE_HELLO_TIME>),                   // HelloTime
    scalar(kStpGroup, 10, read_constant<kHoldTime>),                               // HoldTime
    scalar(kStpGroup, 11, read_number<STP_ATTRIBUTE_FORWARD_DELAY>),               // ForwardDelay
    scalar(kStpGroup, 12, read_number<STP_ATTRIBUTE_BRIDGE_MAX_AGE>),              // BridgeMaxAge
    scalar(kStpGroup, 13, read_number<STP_ATTRIBUTE_BRIDGE_HELLO_TIME>),           // BridgeHelloTime
    scalar(kStpGroup, 14, read_number<STP_ATTRIBUTE_BRIDGE_FORWARD_DELAY>),        // BridgeForwardDelay

    // dot1dStpPortTable
    stp_port(1, read_number<STP_ATTRIBUTE_BRIDGE_PORT>),            // dot1dStpPort
    stp_port(2, read_number<STP_ATTRIBUTE_PORT_PRIORITY, kOctet>),  // PortPriority
    stp_port(3, read_port_state),                                   // PortState
    stp_port(4, read_port_enable),                                  // PortEnable
    stp_port(5, read_short_path_cost),                              // PortPathCost
    stp_port(6, read_identifier<STP_ATTRIBUTE_DESIGNATED_ROOT_PRIORITY,
                                STP_ATTRIBUTE_DESIGNATED_ROOT_MAC>),  // PortDesignatedRoot
    stp_port(7, read_number<STP_ATTRIBUTE_DESIGNATED_COST>),          // PortDesignatedCost
    stp_port(8, read_identifier<STP_ATTRIBUTE_DESIGNATED_BRIDGE_PRIORITY,
                                STP_ATTRIBUTE_DESIGNATED_BRIDGE_MAC>),                // PortDesignatedBridge
    stp_port(9, read_designated_port),                                                // PortDesignatedPort
    stp_port(10, read_number<STP_ATTRIBUTE_FORWARD_TRANSITIONS, kAny, ASN_COUNTER>),  // ForwardTransitions
    stp_port(11, read_number<STP_ATTRIBUTE_PATH_COST, kPositive>),                    // PortPathCost32

    // What RSTP-MIB adds to dot1dStp.
    scalar(kStpGroup, 16, read_protocol_version),                     // dot1dStpVersion
    scalar(kStpGroup, 17, read_number<STP_ATTRIBUTE_TX_HOLD_COUNT>),  // dot1dStpTxHoldCount

    // dot1dStpExtPortTable
    rstp_port(1, read_constant<kFalse>),                     // PortProtocolMigration: a command, reads false
    rstp_port(2, read_truth<STP_ATTRIBUTE_ADMIN_EDGE>),      // PortAdminEdgePort
    rstp_port(3, read_truth<STP_ATTRIBUTE_EDGE>),            // PortOperEdgePort
    rstp_port(4, read_admin_point_to_point),                 // PortAdminPointToPoint
    rstp_port(5, read_truth<STP_ATTRIBUTE_POINT_TO_POINT>),  // PortOperPointToPoint
    rstp_port(6, nullptr)};                                  // PortAdminPathCost

constexpr bool has_smaller_name(const Object &one, const Object &other) {
  return std::lexicographical_compare(one.name, one.name + one.length, other.name, other.name + other.length);
}

static_assert(std::is_sorted(std::begin(kObjects), std::end(kObjects), has_smaller_name));

constexpr const Object *kFirstStpObject =
    std::find_if(std::begin(kObjects), std::end(kObjects),
                 [](const Object &object) { return object.name[0] == kStpGroup; });

}  // namespace

std::span<const Object> objects_of(std::span<const oid> root) {
  if (root.empty()) {
    return kObjects;
  }
  return root.front() == kBaseGroup ? std::span(std::begin(kObjects), kFirstStpObject)
                                    : std::span(kFirstStpObject, std::end(kObjects));
}

}  // namespace stpbridge
