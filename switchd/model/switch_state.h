// What is configured on a switch, the state of its links, and what its spanning tree has agreed with the
// neighbours: plain data, as a scenario states it. What follows from it is in derived.h.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "model/mac_address.h"
#include "model/tree_set.h"
#include "model/vlan_set.h"
#include "platform/stp_protocol.h"

namespace stpswitch {

// The numbers are those that the spanning-tree process answers with.
enum class SpanningTreeMode : uint32_t { kMst = STP_MODE_MST, kRapidPvst = STP_MODE_RAPID_PVST };
enum class PathCostMethod : uint32_t { kShort = STP_PATH_COST_SHORT, kLong = STP_PATH_COST_LONG };
enum class Guard : uint32_t {
  kEnabled = STP_GUARD_ENABLED,
  kDisabled = STP_GUARD_DISABLED,
  kDefault = STP_GUARD_DEFAULT  // as the switch says
};
enum class LinkType : uint32_t {
  kPointToPoint = STP_LINK_POINT_TO_POINT,
  kShared = STP_LINK_SHARED,
  kAuto = STP_LINK_AUTO
};
enum class PortRole : uint32_t {
  kDisabled = STP_ROLE_DISABLED,
  kRoot = STP_ROLE_ROOT,
  kDesignated = STP_ROLE_DESIGNATED,
  kAlternate = STP_ROLE_ALTERNATE,
  kBackup = STP_ROLE_BACKUP
};

struct Settings {
  std::string name;
  SpanningTreeMode mode = SpanningTreeMode::kMst;
  PathCostMethod path_cost_method = PathCostMethod::kShort;
  bool loop_guard_default = false;
};

// What IEEE 802.1Q recommends for MaxHops.
inline constexpr uint32_t kRecommendedHops = 20;

// IEEE 802.1Q clause 13.8: Configuration Digest.
using MstDigest = std::array<uint8_t, 16>;

struct MstRegion {
  std::string name;  // Configuration Name
  uint32_t revision = 0;
  uint32_t max_hops = kRecommendedHops;
  std::optional<MstDigest> pre_standard_digest;  // none: equal to the standard one
};

// Where the switch stands in the CIST (IEEE 802.1Q clause 13).
struct MstCist {
  uint32_t remaining_hops = kRecommendedHops;
  uint32_t regional_root_priority = 32768;  // with the address, the Regional Root Identifier
  MacAddress regional_root_mac = {0x00, 0x00, 0x5E, 0x00, 0x53, 0x00};
  uint32_t internal_root_path_cost = 0;
};

struct MstInstance {
  VlanSet vlans;
  uint32_t remaining_hops = kRecommendedHops;
};

struct RapidPvst {
  VlanSet disabled_vlans;  // no spanning tree runs on them
};

// Why spanning tree keeps a port of a tree from forwarding although the tree would have it forward.
enum class Inconsistency {
  kRoot,  // a better root was heard of, against root guard
  kLoop,  // nothing was heard any more, against loop guard
  kPvid,  // the neighbour's port VLAN identifier is another one
  kType   // the neighbour's port is not of the same type
};

// What IEEE 802.1Q recommends for ports of 1 Gb/s.
inline constexpr uint32_t kRecommendedPathCost = 20000;

// What ports and port-channels have in common.
struct Interface {
  std::string name;
  VlanSet vlans;
  uint32_t path_cost = kRecommendedPathCost;
  bool root_guard = false;
  Guard loop_guard = Guard::kDefault;
  LinkType link_type = LinkType::kAuto;
  bool pre_standard_mst = false;  // always sends what equipment from before the standard understands

  // What spanning tree has found the interface to be.
  bool edge = false;
  bool boundary = false;               // of the MST region
  bool peer = false;                   // the neighbour takes part in spanning tree
  bool dispute = false;                // the neighbour does not hear what is sent to it
  bool pre_standard_neighbor = false;  // equipment from before the standard was heard
  // Both whether or not such trees run here.
  std::map<PortRole, TreeSet> roles;  // root, alternate and backup
  std::map<Inconsistency, TreeSet> inconsistencies;
};

struct Port : Interface {
  bool link_up = true;
  bool half_duplex = false;
  uint32_t channel = 0;    // the port-channel it is a member of, 0 for none
  bool switchport = true;  // takes part in bridging
};

struct PortChannel : Interface {};

struct Access {
  std::vector<std::string> refused_users;
};

struct SwitchState {
  Settings settings;
  MstRegion mst;
  MstCist mst_cist;
  RapidPvst rapid_pvst;
  Access access;
  // By number.
  std::map<uint32_t, MstInstance> mst_instances;  // without the CIST
  std::map<uint32_t, Port> ports;
  std::map<uint32_t, PortChannel> port_channels;
};

}  // namespace stpswitch
