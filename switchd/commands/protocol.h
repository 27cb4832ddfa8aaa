// The numbers of the spanning-tree process's command protocol: its commands, their keys, and the attributes
// of their replies.
#pragma once

#include <cstdint>

namespace stpswitch {

enum class Command : uint32_t {
  kGlobalSettings = 104,  // mode, path cost methods, loop guard default, hop count
  kMstRegion = 112        // name, revision and digests of the MST region
};

// Key attributes of requests.
enum class Key : uint32_t {
  kGlobalSettings = 0x0102'0227,  // selects the settings of the whole switch; its value says nothing
  kMstDigests = 0x0102'01C0       // wants the digests of the MST region; its value says nothing
};

// Attributes of replies.
enum class Token : uint32_t {
  kSpanningTreeMode = 0x0202'B001,     // enum SpanningTreeMode
  kPathCostMethod = 0x1402'B00B,       // enum PathCostMethod, as configured
  kPathCostOperMethod = 0x1402'B00C,   // enum PathCostMethod, in force
  kLoopGuardDefault = 0x0202'A01F,     // 0 off, 1 on
  kMstMaxHops = 0x1402'9027,           // MaxHops
  kMstRegionName = 0x3002'B002,        // Configuration Name, without a terminator
  kMstRegionRevision = 0x1402'B003,    // Revision Level
  kMstConfigDigest = 0x3002'B005,      // Configuration Digest, 16 octets
  kMstPreStandardDigest = 0x3002'B006  // the digest that older equipment computes, 16 octets
};

}  // namespace stpswitch
