// What the spanning-tree process's command server is asked: its address, commands and attribute tokens.
#pragma once

#include <cstdint>

#include "platform/cmd.h"

namespace stpsnmp::query {

inline constexpr uint32_t kDestination = 0xFE00'0000;
inline constexpr uint32_t kService = 171;

enum class Command : uint32_t {
  kGlobalSettings = 104,  // mode, path cost methods, loop guard default, MST hop count
  kMstRegion = 112        // region name, revision and digests
};

enum class Action : uint32_t { kGet = CMD_ACTION_GET, kGetNext = CMD_ACTION_GET_NEXT };

enum class Token : uint32_t {
  kNoKey = 0,  // stands for a key that a command does not take

  // Keys; their value is 0.
  kGlobalSettingsKey = 0x0102'0227,
  kMstDigestKey = 0x0102'01C0,

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
  kMstPreStandardDigest = 0x3002'B006
};

}  // namespace stpsnmp::query
