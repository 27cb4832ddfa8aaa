// What the spanning-tree process's command server is asked: its address, commands and attribute tokens.
#pragma once

#include <cstdint>

#include "platform/cmd.h"

namespace stpsnmp::query {

inline constexpr uint32_t kDestination = 0xFE00'0000;
inline constexpr uint32_t kService = 171;

enum class Command : uint32_t {
  kGlobalSettings = 104,     // mode, path cost methods, loop guard default, MST hop count
  kRapidPvstPort = 105,      // ports of Rapid-PVST trees; by interface alone, bridge ports
  kMstPort = 111,            // ports of MST instances; by interface alone, bridge ports
  kMstRegion = 112,          // region name, revision and digests; without a key, the VLAN map as well
  kPvstVlan = 115,           // per-VLAN spanning trees
  kInconsistency = 116,      // port VLAN identifier and port type inconsistencies
  kRootGuard = 117,          // root guard settings
  kLoopGuard = 118,          // loop guard settings
  kPortSettings = 119,       // RSTP and MST settings of ports
  kRootInconsistency = 120,  // ports that root guard blocks
  kLoopInconsistency = 121,  // ports that loop guard blocks
  kMstInstance = 122         // MST instances
};

enum class Action : uint32_t { kGet = CMD_ACTION_GET, kGetNext = CMD_ACTION_GET_NEXT };

enum class Token : uint32_t {
  kNoKey = 0,  // stands for a key that a command does not take

  // Keys; the value of the first two is 0, those of trees are ranges (tree_range.h).
  kGlobalSettingsKey = 0x0102'0227,
  kMstDigestKey = 0x0102'01C0,
  kInterfaceKey = 0x0C02'0105,
  kMstInterfaceKey = 0x0C02'018B,
  kVlanTreeKey = 0x1302'00B4,
  kMstTreeKey = 0x1302'0131,

  // Keys of requests that other modules of the agent build: settings of a tree, and of a port in a tree.
  kVlanTreeSettingKey = 0x1302'0005,
  kMstTreeSettingKey = 0x1302'0074,
  kVlanTreePortSettingKey = 0x1302'0019,
  kMstTreePortSettingKey = 0x1302'0092,

  // Global settings.
  kSpanningTreeMode = 0x0202'B001,
  kPathCostMethod = 0x1402'B00B,
  kPathCostOperMethod = 0x1402'B00C,
  kLoopGuardDefault = 0x0202'A01F,
  kMstMaxHops = 0x1402'9027,

  // MST region.
  kMstRegionName = 0x3002'B002,
  kMstRegionRevision = 0x1402'B003,
  kMstConfigDigest = 0x3002'B005,
  kMstPreStandardDigest = 0x3002'B006,

  // Rows: the index of the one that answers, and what it holds.
  kAnsweredInterface = 0x0C02'A001,
  kAnsweredTree = 0x1402'9001,
  kAnsweredPortTree = 0x1402'A006,  // in entries of a port in a tree
  kPortValue = 0x1402'A015,
  kPortPathCost = 0x1402'A008,
  kRootGuardSetting = 0x0202'A01A,
  kLoopGuardSetting = 0x0202'A01A,  // the same number: the command tells them apart
  kRstpPortSetting = 0x0202'A019,
  kMstAdminPreStandard = 0x0102'00AA,
  kPortRole = 0x0202'A003,
  kPortOperPointToPoint = 0x0202'A01E,
  kPortOperEdge = 0x0202'A01D,
  kPortBoundary = 0x0202'A028,
  kPortPeer = 0x0202'A027,
  kPortDispute = 0x0202'A02D,
  kPortPreStandard = 0x0202'A02E,
  kVlanTreeState = 0x0000'102C,     // a bare number: no type, no space
  kMstInstanceValue = 0x1402'9027,  // the number that the global settings use for the hop count
  kMstInstanceMacAddress = 0x0F02'9023,
  kMstInstancePriority = 0x1402'9024,
  kMstInstanceCounter = 0x1402'9025
};

}  // namespace stpsnmp::query
