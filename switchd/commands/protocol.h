// The numbers of the spanning-tree process's command protocol: its commands, their keys, and the attributes
// of their replies.
#pragma once

#include <cstdint>

#include "wire/mst_vlan_map.h"

namespace stpswitch {

enum class Command : uint32_t {
  kGlobalSettings = 104,              // mode, path cost methods, loop guard default, hop count
  kRapidPvstPorts = 105,              // ports of the spanning trees of single VLANs; bridge ports
  kMstPorts = 111,                    // ports of the trees of the MST region; bridge ports
  kMstRegion = 112,                   // name, revision, digests and VLAN map of the MST region
  kVlanTrees = 115,                   // the spanning trees of single VLANs
  kPvidAndTypeInconsistencies = 116,  // ports that do not match the neighbour's
  kRootGuard = 117,                   // root guard of the bridge ports
  kLoopGuard = 118,                   // loop guard of the bridge ports
  kPortSettings = 119,                // link type and pre-standard MST of the bridge ports
  kRootInconsistencies = 120,         // ports that root guard blocks
  kLoopInconsistencies = 121,         // ports that loop guard blocks
  kMstInstances = 122                 // the trees of the MST region
};

// Key attributes of requests.
enum class Key : uint32_t {
  kGlobalSettings = 0x0102'0227,  // selects the settings of the whole switch; its value says nothing
  kMstDigests = 0x0102'01C0,      // wants the digests of the MST region alone; its value says nothing
  kVlanTree = 0x1302'00B4,        // a list of one VLAN
  kMstInstance = 0x1302'0131,     // a list of one MST instance
  kInterface = 0x0C02'0105,       // an interface index
  kMstInterface = 0x0C02'018B     // the same, where MST is asked about
};

// Attributes of replies.
enum class Token : uint32_t {
  kSpanningTreeMode = 0x0202'B001,      // enum SpanningTreeMode
  kPathCostMethod = 0x1402'B00B,        // enum PathCostMethod, as configured
  kPathCostOperMethod = 0x1402'B00C,    // enum PathCostMethod, in force
  kLoopGuardDefault = 0x0202'A01F,      // 0 off, 1 on
  kGuard = 0x0202'A01A,                 // of a port: enum Guard, of the kind that is asked about
  kLinkType = 0x0202'A019,              // of a port: enum LinkType, as configured
  kPointToPoint = 0x0202'A01E,          // of a port with a link: 1 point-to-point, 0 shared
  kPreStandardMst = 0x0102'00AA,        // of a port: 1 always sends what pre-standard equipment understands
  kHops = 0x1402'9027,                  // of the switch: MaxHops; of an MST instance: remaining hops
  kTree = 0x1402'9001,                  // the VLAN or MST instance that the answer is about
  kInterface = 0x0C02'A001,             // the interface index that the answer is about
  kPortTree = 0x1402'A006,              // of a port: the VLAN or MST instance that the answer is about
  kPathCost = 0x1402'A008,              // of a port
  kPortRole = 0x0202'A003,              // enum PortRole
  kEdge = 0x0202'A01D,                  // of a port, as the following: 1 yes, 0 no
  kBoundary = 0x0202'A028,              // of the MST region
  kPeer = 0x0202'A027,                  // the neighbour takes part in spanning tree
  kDispute = 0x0202'A02D,               // the neighbour does not hear what is sent to it
  kPreStandardNeighbor = 0x0202'A02E,   // equipment from before the standard was heard
  kInconsistencies = 0x1402'A015,       // a bit for each inconsistency that the command is about
  kVlanTreeState = 0x0000'102C,         // 1 a spanning tree runs on the VLAN, 0 it is switched off
  kRegionalRootMac = 0x0F02'9023,       // Regional Root Identifier: its address
  kRegionalRootPriority = 0x1402'9024,  // and its priority
  kInternalRootPathCost = 0x1402'9025,  // Internal Root Path Cost
  kMstRegionName = 0x3002'B002,         // Configuration Name, without a terminator
  kMstRegionRevision = 0x1402'B003,     // Revision Level
  kMstConfigDigest = 0x3002'B005,       // Configuration Digest, 16 octets
  kMstPreStandardDigest = 0x3002'B006,  // the digest that older equipment computes, 16 octets
  kMstVlanMap = stpplatform::wire::kMstVlanMapToken  // one for each MST instance, the CIST first
};

}  // namespace stpswitch
