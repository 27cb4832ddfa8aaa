// What somebody has configured on a switch: plain data. A source that cannot know a value leaves it unset,
// and then it is nobody's to tell.
#pragma once

#include <array>
#include <cstdint>
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

// What a bridge sends: the versions of IEEE 802.1D clause 9.3 and IEEE 802.1Q clause 14.
enum class ProtocolVersion : uint32_t { kStp = 0, kRstp = 2, kMstp = 3 };

struct Settings {
  std::string name;
  std::optional<SpanningTreeMode> mode;  // none: no spanning tree runs
  std::optional<PathCostMethod> path_cost_method;
  std::optional<bool> loop_guard_default;

  bool operator==(const Settings &) const = default;
};

// IEEE 802.1D clause 17.13, in hundredths of a second.
struct Timers {
  std::optional<uint32_t> max_age;
  std::optional<uint32_t> hello_time;
  std::optional<uint32_t> forward_delay;

  bool operator==(const Timers &) const = default;
};

// How a bridge takes part in a spanning tree.
struct TreeSettings {
  std::optional<uint32_t> priority;  // of the bridge, without the system identifier extension
  Timers timers;                     // what it uses as the root
  std::optional<uint32_t> hold_count;
  std::optional<ProtocolVersion> protocol_version;

  bool operator==(const TreeSettings &) const = default;
};

// IEEE 802.1Q clause 13.8: Configuration Digest.
using MstDigest = std::array<uint8_t, 16>;

// A bridge outside any region has none of it.
struct MstRegion {
  std::optional<std::string> name;  // Configuration Name
  std::optional<uint32_t> revision;
  std::optional<uint32_t> max_hops;
  std::optional<MstDigest> pre_standard_digest;  // none: equal to the standard one

  bool operator==(const MstRegion &) const = default;
};

struct RapidPvst {
  VlanSet disabled_vlans;  // no spanning tree runs on them

  bool operator==(const RapidPvst &) const = default;
};

struct Access {
  std::vector<std::string> refused_users;

  bool operator==(const Access &) const = default;
};

// What ports and port-channels have in common.
struct ConfiguredInterface {
  std::string name;
  VlanSet vlans;
  std::optional<uint32_t> path_cost;
  std::optional<uint32_t> priority;  // of the port, IEEE 802.1D clause 9.2.7
  std::optional<bool> root_guard;
  std::optional<Guard> loop_guard;
  std::optional<LinkType> link_type;
  std::optional<bool> pre_standard_mst;  // always sends what equipment from before the standard understands
  std::optional<bool> admin_edge;        // IEEE 802.1D clause 17.13.1
  std::optional<bool> auto_edge;         // IEEE 802.1D clause 17.13.3

  bool operator==(const ConfiguredInterface &) const = default;
};

}  // namespace stpswitch
