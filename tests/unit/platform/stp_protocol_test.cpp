// platform/stp_protocol.h says what tests expect.
#include "platform/stp_protocol.h"

#include <gtest/gtest.h>

#include <cstddef>

#include "protocol_numbers.h"

TEST(StpProtocol, HasTheAddress) {
  EXPECT_EQ(STP_DESTINATION, protocol::kDestination);
  EXPECT_EQ(STP_SERVICE, protocol::kService);
}

TEST(StpProtocol, HasTheCommands) {
  EXPECT_EQ(STP_COMMAND_GLOBAL_SETTINGS, protocol::kGlobalSettings);
  EXPECT_EQ(STP_COMMAND_RAPID_PVST_PORTS, protocol::kRapidPvstPorts);
  EXPECT_EQ(STP_COMMAND_MST_PORTS, protocol::kMstPorts);
  EXPECT_EQ(STP_COMMAND_MST_REGION, protocol::kMstRegion);
  EXPECT_EQ(STP_COMMAND_VLAN_TREES, protocol::kVlanTrees);
  EXPECT_EQ(STP_COMMAND_PORT_INCONSISTENCIES, protocol::kPortInconsistencies);
  EXPECT_EQ(STP_COMMAND_ROOT_GUARD, protocol::kRootGuard);
  EXPECT_EQ(STP_COMMAND_LOOP_GUARD, protocol::kLoopGuard);
  EXPECT_EQ(STP_COMMAND_PORT_SETTINGS, protocol::kPortSettings);
  EXPECT_EQ(STP_COMMAND_ROOT_INCONSISTENCIES, protocol::kRootInconsistencies);
  EXPECT_EQ(STP_COMMAND_LOOP_INCONSISTENCIES, protocol::kLoopInconsistencies);
  EXPECT_EQ(STP_COMMAND_MST_INSTANCES, protocol::kMstInstances);
  EXPECT_EQ(STP_COMMAND_BRIDGE_TREES, protocol::kBridgeTrees);
  EXPECT_EQ(STP_COMMAND_BRIDGE_PORTS, protocol::kBridgePorts);
}

TEST(StpProtocol, HasTheKeys) {
  EXPECT_EQ(STP_KEY_GLOBAL_SETTINGS, protocol::kGlobalSettingsKey);
  EXPECT_EQ(STP_KEY_MST_DIGESTS, protocol::kMstDigestsKey);
  EXPECT_EQ(STP_KEY_INTERFACE, protocol::kInterfaceKey);
  EXPECT_EQ(STP_KEY_MST_INTERFACE, protocol::kMstInterfaceKey);
  EXPECT_EQ(STP_KEY_VLAN_TREE, protocol::kVlanTreeKey);
  EXPECT_EQ(STP_KEY_MST_TREE, protocol::kMstTreeKey);
  EXPECT_EQ(STP_KEY_BRIDGE_PORT, protocol::kBridgePortKey);
  EXPECT_EQ(STP_KEY_VLAN_TREE_SETTINGS, protocol::kVlanTreeSettingsKey);
  EXPECT_EQ(STP_KEY_MST_TREE_SETTINGS, protocol::kMstTreeSettingsKey);
  EXPECT_EQ(STP_KEY_VLAN_TREE_PORT_SETTINGS, protocol::kVlanTreePortSettingsKey);
  EXPECT_EQ(STP_KEY_MST_TREE_PORT_SETTINGS, protocol::kMstTreePortSettingsKey);
}

TEST(StpProtocol, HasTheAttributes) {
  EXPECT_EQ(STP_ATTRIBUTE_INTERFACE, protocol::kInterface);
  EXPECT_EQ(STP_ATTRIBUTE_TREE, protocol::kTree);
  EXPECT_EQ(STP_ATTRIBUTE_PORT_TREE, protocol::kPortTree);
  EXPECT_EQ(STP_ATTRIBUTE_MODE, protocol::kMode);
  EXPECT_EQ(STP_ATTRIBUTE_PATH_COST_METHOD, protocol::kPathCostMethod);
  EXPECT_EQ(STP_ATTRIBUTE_PATH_COST_OPER_METHOD, protocol::kPathCostOperMethod);
  EXPECT_EQ(STP_ATTRIBUTE_LOOP_GUARD_DEFAULT, protocol::kLoopGuardDefault);
  EXPECT_EQ(STP_ATTRIBUTE_HOPS, protocol::kHops);
  EXPECT_EQ(STP_ATTRIBUTE_MST_REGION_NAME, protocol::kMstRegionName);
  EXPECT_EQ(STP_ATTRIBUTE_MST_REGION_REVISION, protocol::kMstRegionRevision);
  EXPECT_EQ(STP_ATTRIBUTE_MST_CONFIG_DIGEST, protocol::kMstConfigDigest);
  EXPECT_EQ(STP_ATTRIBUTE_MST_PRE_STANDARD_DIGEST, protocol::kMstPreStandardDigest);
  EXPECT_EQ(STP_ATTRIBUTE_VLAN_TREE_STATE, protocol::kVlanTreeState);
  EXPECT_EQ(STP_ATTRIBUTE_REGIONAL_ROOT_MAC, protocol::kRegionalRootMac);
  EXPECT_EQ(STP_ATTRIBUTE_REGIONAL_ROOT_PRIORITY, protocol::kRegionalRootPriority);
  EXPECT_EQ(STP_ATTRIBUTE_INTERNAL_ROOT_PATH_COST, protocol::kInternalRootPathCost);
  EXPECT_EQ(STP_ATTRIBUTE_GUARD, protocol::kGuard);
  EXPECT_EQ(STP_ATTRIBUTE_LINK_TYPE, protocol::kLinkType);
  EXPECT_EQ(STP_ATTRIBUTE_POINT_TO_POINT, protocol::kPointToPoint);
  EXPECT_EQ(STP_ATTRIBUTE_PRE_STANDARD_MST, protocol::kPreStandardMst);
  EXPECT_EQ(STP_ATTRIBUTE_PATH_COST, protocol::kPathCost);
  EXPECT_EQ(STP_ATTRIBUTE_PORT_ROLE, protocol::kPortRole);
  EXPECT_EQ(STP_ATTRIBUTE_EDGE, protocol::kEdge);
  EXPECT_EQ(STP_ATTRIBUTE_BOUNDARY, protocol::kBoundary);
  EXPECT_EQ(STP_ATTRIBUTE_PEER, protocol::kPeer);
  EXPECT_EQ(STP_ATTRIBUTE_DISPUTE, protocol::kDispute);
  EXPECT_EQ(STP_ATTRIBUTE_PRE_STANDARD_PEER, protocol::kPreStandardPeer);
  EXPECT_EQ(STP_ATTRIBUTE_INCONSISTENCY, protocol::kInconsistency);
  EXPECT_EQ(STP_ATTRIBUTE_BRIDGE_PRIORITY, protocol::kBridgePriority);
  EXPECT_EQ(STP_ATTRIBUTE_BRIDGE_MAC, protocol::kBridgeMac);
  EXPECT_EQ(STP_ATTRIBUTE_ROOT_PRIORITY, protocol::kRootPriority);
  EXPECT_EQ(STP_ATTRIBUTE_ROOT_MAC, protocol::kRootMac);
  EXPECT_EQ(STP_ATTRIBUTE_ROOT_COST, protocol::kRootCost);
  EXPECT_EQ(STP_ATTRIBUTE_ROOT_PORT, protocol::kRootPort);
  EXPECT_EQ(STP_ATTRIBUTE_MAX_AGE, protocol::kMaxAge);
  EXPECT_EQ(STP_ATTRIBUTE_HELLO_TIME, protocol::kHelloTime);
  EXPECT_EQ(STP_ATTRIBUTE_FORWARD_DELAY, protocol::kForwardDelay);
  EXPECT_EQ(STP_ATTRIBUTE_BRIDGE_MAX_AGE, protocol::kBridgeMaxAge);
  EXPECT_EQ(STP_ATTRIBUTE_BRIDGE_HELLO_TIME, protocol::kBridgeHelloTime);
  EXPECT_EQ(STP_ATTRIBUTE_BRIDGE_FORWARD_DELAY, protocol::kBridgeForwardDelay);
  EXPECT_EQ(STP_ATTRIBUTE_TX_HOLD_COUNT, protocol::kTxHoldCount);
  EXPECT_EQ(STP_ATTRIBUTE_PROTOCOL_VERSION, protocol::kProtocolVersion);
  EXPECT_EQ(STP_ATTRIBUTE_TOPOLOGY_CHANGES, protocol::kTopologyChanges);
  EXPECT_EQ(STP_ATTRIBUTE_TOPOLOGY_AGE, protocol::kTopologyAge);
  EXPECT_EQ(STP_ATTRIBUTE_BRIDGE_PORT_COUNT, protocol::kBridgePortCount);
  EXPECT_EQ(STP_ATTRIBUTE_BRIDGE_PORT, protocol::kBridgePort);
  EXPECT_EQ(STP_ATTRIBUTE_IF_MIB_INDEX, protocol::kIfMibIndex);
  EXPECT_EQ(STP_ATTRIBUTE_PORT_PRIORITY, protocol::kPortPriority);
  EXPECT_EQ(STP_ATTRIBUTE_PORT_STATE, protocol::kPortState);
  EXPECT_EQ(STP_ATTRIBUTE_DESIGNATED_ROOT_PRIORITY, protocol::kDesignatedRootPriority);
  EXPECT_EQ(STP_ATTRIBUTE_DESIGNATED_ROOT_MAC, protocol::kDesignatedRootMac);
  EXPECT_EQ(STP_ATTRIBUTE_DESIGNATED_COST, protocol::kDesignatedCost);
  EXPECT_EQ(STP_ATTRIBUTE_DESIGNATED_BRIDGE_PRIORITY, protocol::kDesignatedBridgePriority);
  EXPECT_EQ(STP_ATTRIBUTE_DESIGNATED_BRIDGE_MAC, protocol::kDesignatedBridgeMac);
  EXPECT_EQ(STP_ATTRIBUTE_DESIGNATED_PORT, protocol::kDesignatedPort);
  EXPECT_EQ(STP_ATTRIBUTE_FORWARD_TRANSITIONS, protocol::kForwardTransitions);
  EXPECT_EQ(STP_ATTRIBUTE_ADMIN_EDGE, protocol::kAdminEdge);
}

TEST(StpProtocol, HasTheValues) {
  EXPECT_EQ(STP_MODE_MST, 4U);
  EXPECT_EQ(STP_MODE_RAPID_PVST, 5U);
  EXPECT_EQ(STP_PATH_COST_SHORT, 1U);
  EXPECT_EQ(STP_PATH_COST_LONG, 2U);
  EXPECT_EQ(STP_GUARD_ENABLED, 1U);
  EXPECT_EQ(STP_GUARD_DISABLED, 2U);
  EXPECT_EQ(STP_GUARD_DEFAULT, 3U);
  EXPECT_EQ(STP_LINK_POINT_TO_POINT, 1U);
  EXPECT_EQ(STP_LINK_SHARED, 2U);
  EXPECT_EQ(STP_LINK_AUTO, 3U);
  EXPECT_EQ(STP_ROLE_DISABLED, 1U);
  EXPECT_EQ(STP_ROLE_ROOT, 2U);
  EXPECT_EQ(STP_ROLE_DESIGNATED, 3U);
  EXPECT_EQ(STP_ROLE_ALTERNATE, 4U);
  EXPECT_EQ(STP_ROLE_BACKUP, 5U);
  EXPECT_EQ(STP_INCONSISTENT_PVID, 1U);
  EXPECT_EQ(STP_INCONSISTENT_TYPE, 2U);
}

TEST(StpProtocol, HasTheNotifications) {
  EXPECT_EQ(STP_NOTIFICATION_PORT_INCONSISTENCY, protocol::kPortInconsistencyClass);
  EXPECT_EQ(STP_NOTIFICATION_LOOP_INCONSISTENCY, protocol::kLoopInconsistencyClass);
  EXPECT_EQ(STP_NOTIFICATION_ROOT_INCONSISTENCY, protocol::kRootInconsistencyClass);
  EXPECT_EQ(STP_NOTIFICATION_NEW_ROOT, protocol::kNewRootClass);
  EXPECT_EQ(STP_NOTIFICATION_TOPOLOGY_CHANGE, protocol::kTopologyChangeClass);
  EXPECT_EQ(STP_NOTIFICATION_TREES, protocol::kTreesClass);
  EXPECT_EQ(STP_INCONSISTENCY_APPEARED, 1U);
  EXPECT_EQ(STP_INCONSISTENCY_VANISHED, 2U);
  EXPECT_EQ(offsetof(stp_inconsistency_payload, tree), 0U);
  EXPECT_EQ(offsetof(stp_inconsistency_payload, if_index), 4U);
  EXPECT_EQ(offsetof(stp_inconsistency_payload, state), 8U);
  EXPECT_EQ(offsetof(stp_inconsistency_payload, mode), 12U);
  EXPECT_EQ(sizeof(stp_inconsistency_payload), 16U);
  EXPECT_EQ(offsetof(stp_tree_payload, tree), 0U);
  EXPECT_EQ(offsetof(stp_tree_payload, bridge_port), 4U);
  EXPECT_EQ(offsetof(stp_tree_payload, if_mib_index), 8U);
  EXPECT_EQ(offsetof(stp_tree_payload, mode), 12U);
  EXPECT_EQ(sizeof(stp_tree_payload), 16U);
}

TEST(StpProtocol, HasTheNumbersOfTheStandard) {
  EXPECT_EQ(STP_PORT_STATE_DISABLED, 0U);
  EXPECT_EQ(STP_PORT_STATE_BLOCKING, 1U);
  EXPECT_EQ(STP_PORT_STATE_LISTENING, 2U);
  EXPECT_EQ(STP_PORT_STATE_LEARNING, 3U);
  EXPECT_EQ(STP_PORT_STATE_FORWARDING, 4U);
  EXPECT_EQ(STP_PROTOCOL_VERSION_STP, 0U);
  EXPECT_EQ(STP_PROTOCOL_VERSION_RSTP, 2U);
  EXPECT_EQ(STP_PROTOCOL_VERSION_MSTP, 3U);
}

TEST(StpProtocol, HasTheEventClass) { EXPECT_EQ(STP_EVENT_CLASS, 0x73'0000U); }
