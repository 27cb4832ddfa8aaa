// The number by which a lookup handler tells the objects that it serves apart.
#pragma once

#include <cstdint>

namespace stpsnmp {

enum Magic : uint8_t {
  // Scalars.
  kMstRegionName = 9,
  kSmstMaxInstances = 16,
  kSmstConfigPreStandardDigest = 17,
  kSmstMaxInstanceId = 18,
  kSmstRegionRevision = 19,
  kSmstMaxHopCount = 21,
  kSmstConfigDigest = 22,
  kSpanningTreeType = 30,
  kPathCostMode = 31,
  kPathCostOperMode = 35,
  kLoopGuardGlobalDefaultMode = 37,

  // Columns, table by table.
  kLoopInconsistencyTree = 50,
  kLoopInconsistencyPort = 51,
  kLoopInconsistencyState = 52,
  kRstpPortIndex = 54,
  kRstpPortSetting = 55,
  kRstpPortOperLinkType = 56,
  kRstpPortRoleTree = 58,
  kRstpPortRolePort = 59,
  kRstpPortRole = 60,
  kLongStpPortPathCost = 61,
  kRootGuardPort = 62,
  kRootGuardSetting = 63,
  kRootInconsistencyTree = 68,
  kRootInconsistencyPort = 69,
  kRootInconsistencyState = 70,
  kSmstPortIndex = 86,
  kSmstPortFlags = 87,
  kSmstPortAdminMode = 91,
  kSmstPortPreStandardStatus = 92,
  kPvstVlanIndex = 99,
  kPvstVlanState = 100,
  kSmstInstanceIndex = 101,
  kSmstInstanceVlansLow = 102,
  kSmstInstanceVlansHigh = 103,
  kSmstInstanceValue = 104,
  kSmstInstanceBridgeId = 105,
  kSmstInstanceCounter = 106,
  kRpvstPortTree = 107,
  kRpvstPortIndex = 108,
  kRpvstPortFlags = 109,
  kLoopGuardPort = 115,
  kLoopGuardSetting = 117,
  kInconsistencyTree = 118,
  kInconsistencyPort = 119,
  kInconsistencyState = 120
};

}  // namespace stpsnmp
