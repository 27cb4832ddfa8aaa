// What one screen tells of a switch's spanning tree, and its JSON text. What nobody knows is left out.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "model/tree_set.h"
#include "model/vlan_set.h"

namespace stpoverview {

using stpswitch::TreeSet;
using stpswitch::VlanSet;

// How a value is called in JSON, and how a screen shows it.
template <class Kind>
struct Term {
  Kind kind;
  std::string_view name;
  std::string_view shown;
};

enum class Mode { kMst, kRapidPvst };
inline constexpr auto kModes =
    std::to_array<Term<Mode>>({{Mode::kMst, "mst", "mst"}, {Mode::kRapidPvst, "rapid-pvst", "rapid-pvst"}});

enum class Link { kDown, kPointToPoint, kShared };
inline constexpr auto kLinks = std::to_array<Term<Link>>({{Link::kDown, "down", "down"},
                                                          {Link::kPointToPoint, "point-to-point", "p2p"},
                                                          {Link::kShared, "shared", "shared"}});

// IEEE 802.1Q clause 13.12. A port that is disabled in a tree, or not in it, has no role.
enum class Role { kRoot, kDesignated, kAlternate, kBackup };
inline constexpr auto kRoles = std::to_array<Term<Role>>({{Role::kRoot, "root", "R"},
                                                          {Role::kDesignated, "designated", "D"},
                                                          {Role::kAlternate, "alternate", "a"},
                                                          {Role::kBackup, "backup", "b"}});

// What spanning tree has found a port to be.
enum class Flag { kEdge, kBoundary, kPeer, kDispute, kPreStandard };
inline constexpr auto kFlags = std::to_array<Term<Flag>>({{Flag::kEdge, "edge", "E"},
                                                          {Flag::kBoundary, "boundary", "B"},
                                                          {Flag::kPeer, "peer", "P"},
                                                          {Flag::kDispute, "dispute", "X"},
                                                          {Flag::kPreStandard, "pre-standard", "S"}});

enum class Guard { kRoot, kLoop };
inline constexpr auto kGuards =
    std::to_array<Term<Guard>>({{Guard::kRoot, "root", "root"}, {Guard::kLoop, "loop", "loop"}});

// Why a port of a tree is kept from forwarding.
enum class Inconsistency { kRoot, kLoop, kPvid, kType };
inline constexpr auto kInconsistencies =
    std::to_array<Term<Inconsistency>>({{Inconsistency::kRoot, "root", "root guard"},
                                        {Inconsistency::kLoop, "loop", "loop guard"},
                                        {Inconsistency::kPvid, "pvid", "port VLAN identifier"},
                                        {Inconsistency::kType, "type", "port type"}});

struct Region {
  std::string name;
  uint32_t revision = 0;
  std::string digest;  // hexadecimal digits
};

struct RegionalRoot {
  std::string bridge;  // "24576 / 00:00:5e:00:53:2a"
  uint32_t cost = 0;   // the internal root path cost
};

// Of MST instances; a tree of Rapid PVST is its VLAN, and tells no hops.
struct Tree {
  std::optional<VlanSet> vlans;
  std::optional<uint32_t> hops;
};

struct Port {
  std::string name;
  std::optional<Link> link;
  std::set<Flag> flags;
  std::set<Guard> guards;
  std::map<Role, TreeSet> roles;
  std::map<Inconsistency, TreeSet> inconsistent;
};

struct Overview {
  std::string name;  // of the switch
  std::optional<Mode> mode;
  std::optional<Region> region;
  std::optional<RegionalRoot> regional_root;
  VlanSet disabled_vlans;  // in use, and without a tree
  std::map<uint32_t, Tree> trees;
  std::vector<Port> ports;  // the bridge ports, in their order
};

void to_json(nlohmann::json &json, const Overview &overview);

// Into an empty one. Throws stpswitch::Refusal for what is no overview.
void from_json(const nlohmann::json &json, Overview &overview);

}  // namespace stpoverview
