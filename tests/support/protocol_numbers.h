// The numbers of the spanning-tree process's protocol as tests expect them: written out here once more, so
// that a slip in platform/stp_protocol.h does not go by.
#pragma once

#include <cstdint>

namespace protocol {

inline constexpr uint32_t kDestination = 0xFE00'0000;
inline constexpr uint32_t kService = 171;

// Commands.
inline constexpr uint32_t kGlobalSettings = 104;
inline constexpr uint32_t kRapidPvstPorts = 105;
inline constexpr uint32_t kMstPorts = 111;
inline constexpr uint32_t kMstRegion = 112;
inline constexpr uint32_t kVlanTrees = 115;
inline constexpr uint32_t kPortInconsistencies = 116;
inline constexpr uint32_t kRootGuard = 117;
inline constexpr uint32_t kLoopGuard = 118;
inline constexpr uint32_t kPortSettings = 119;
inline constexpr uint32_t kRootInconsistencies = 120;
inline constexpr uint32_t kLoopInconsistencies = 121;
inline constexpr uint32_t kMstInstances = 122;
inline constexpr uint32_t kBridgeTrees = 130;
inline constexpr uint32_t kBridgePorts = 131;
inline constexpr uint32_t kAllCommands[] = {
    kGlobalSettings,      kRapidPvstPorts, kMstPorts,    kMstRegion,    kVlanTrees,
    kPortInconsistencies, kRootGuard,      kLoopGuard,   kPortSettings, kRootInconsistencies,
    kLoopInconsistencies, kMstInstances,   kBridgeTrees, kBridgePorts};

// Keys.
inline constexpr uint32_t kGlobalSettingsKey = 0x0102'0227;
inline constexpr uint32_t kMstDigestsKey = 0x0102'01C0;
inline constexpr uint32_t kInterfaceKey = 0x0C02'0105;
inline constexpr uint32_t kMstInterfaceKey = 0x0C02'018B;
inline constexpr uint32_t kVlanTreeKey = 0x1302'00B4;
inline constexpr uint32_t kMstTreeKey = 0x1302'0131;
inline constexpr uint32_t kBridgePortKey = 0x1402'01C1;
inline constexpr uint32_t kVlanTreeSettingsKey = 0x1302'0005;
inline constexpr uint32_t kMstTreeSettingsKey = 0x1302'0074;
inline constexpr uint32_t kVlanTreePortSettingsKey = 0x1302'0019;
inline constexpr uint32_t kMstTreePortSettingsKey = 0x1302'0092;

// Attributes.
inline constexpr uint32_t kInterface = 0x0C02'A001;
inline constexpr uint32_t kTree = 0x1402'9001;
inline constexpr uint32_t kPortTree = 0x1402'A006;
inline constexpr uint32_t kMode = 0x0202'B001;
inline constexpr uint32_t kPathCostMethod = 0x1402'B00B;
inline constexpr uint32_t kPathCostOperMethod = 0x1402'B00C;
inline constexpr uint32_t kLoopGuardDefault = 0x0202'A01F;
inline constexpr uint32_t kHops = 0x1402'9027;
inline constexpr uint32_t kMstRegionName = 0x3002'B002;
inline constexpr uint32_t kMstRegionRevision = 0x1402'B003;
inline constexpr uint32_t kMstConfigDigest = 0x3002'B005;
inline constexpr uint32_t kMstPreStandardDigest = 0x3002'B006;
inline constexpr uint32_t kVlanTreeState = 0x0000'102C;
inline constexpr uint32_t kRegionalRootMac = 0x0F02'9023;
inline constexpr uint32_t kRegionalRootPriority = 0x1402'9024;
inline constexpr uint32_t kInternalRootPathCost = 0x1402'9025;
inline constexpr uint32_t kGuard = 0x0202'A01A;
inline constexpr uint32_t kLinkType = 0x0202'A019;
inline constexpr uint32_t kPointToPoint = 0x0202'A01E;
inline constexpr uint32_t kPreStandardMst = 0x0102'00AA;
inline constexpr uint32_t kPathCost = 0x1402'A008;
inline constexpr uint32_t kPortRole = 0x0202'A003;
inline constexpr uint32_t kEdge = 0x0202'A01D;
inline constexpr uint32_t kBoundary = 0x0202'A028;
inline constexpr uint32_t kPeer = 0x0202'A027;
inline constexpr uint32_t kDispute = 0x0202'A02D;
inline constexpr uint32_t kPreStandardPeer = 0x0202'A02E;
inline constexpr uint32_t kInconsistency = 0x1402'A015;
inline constexpr uint32_t kBridgePriority = 0x1402'9040;
inline constexpr uint32_t kBridgeMac = 0x0F02'9041;
inline constexpr uint32_t kRootPriority = 0x1402'9042;
inline constexpr uint32_t kRootMac = 0x0F02'9043;
inline constexpr uint32_t kRootCost = 0x1402'9044;
inline constexpr uint32_t kRootPort = 0x1402'9045;
inline constexpr uint32_t kMaxAge = 0x1402'9046;
inline constexpr uint32_t kHelloTime = 0x1402'9047;
inline constexpr uint32_t kForwardDelay = 0x1402'9048;
inline constexpr uint32_t kBridgeMaxAge = 0x1402'9049;
inline constexpr uint32_t kBridgeHelloTime = 0x1402'904A;
inline constexpr uint32_t kBridgeForwardDelay = 0x1402'904B;
inline constexpr uint32_t kTxHoldCount = 0x1402'904C;
inline constexpr uint32_t kProtocolVersion = 0x0202'904D;
inline constexpr uint32_t kTopologyChanges = 0x1402'904E;
inline constexpr uint32_t kTopologyAge = 0x1402'904F;
inline constexpr uint32_t kBridgePortCount = 0x1402'9050;
inline constexpr uint32_t kBridgePort = 0x1402'A040;
inline constexpr uint32_t kIfMibIndex = 0x1402'A041;
inline constexpr uint32_t kPortPriority = 0x1402'A042;
inline constexpr uint32_t kPortState = 0x0202'A043;
inline constexpr uint32_t kDesignatedRootPriority = 0x1402'A044;
inline constexpr uint32_t kDesignatedRootMac = 0x0F02'A045;
inline constexpr uint32_t kDesignatedCost = 0x1402'A046;
inline constexpr uint32_t kDesignatedBridgePriority = 0x1402'A047;
inline constexpr uint32_t kDesignatedBridgeMac = 0x0F02'A048;
inline constexpr uint32_t kDesignatedPort = 0x1402'A049;
inline constexpr uint32_t kForwardTransitions = 0x1402'A04A;
inline constexpr uint32_t kAdminEdge = 0x0202'A04B;

// Notification classes.
inline constexpr uint32_t kPortInconsistencyClass = 17421;
inline constexpr uint32_t kLoopInconsistencyClass = 17422;
inline constexpr uint32_t kRootInconsistencyClass = 17423;
inline constexpr uint32_t kNewRootClass = 17424;
inline constexpr uint32_t kTopologyChangeClass = 17425;
inline constexpr uint32_t kTreesClass = 17426;

}  // namespace protocol
