#include "sources/openvswitch/watched_bridge.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <system_error>

#include "base/printable.h"
#include "model/refusal.h"
#include "model/vlan_set.h"

namespace stpswitch {
namespace {

constexpr char kBeforeVlan = '=';

// What an interface of Linux, and therefore a bridge, can be called.
constexpr size_t kMaxBridgeName = 15;

// A switch's name is no longer than other sources let it be.
constexpr size_t kMaxSwitchName = 64;

uint32_t parse_vlan(const std::string &text, std::string_view digits) {
  uint32_t vlan = 0;
  const char *const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, vlan);
  if (error != std::errc() || stop != end || vlan < kMinVlan || vlan > kMaxVlan) {
    throw Refusal("'" + text + "': '" + std::string(digits) + "' is not a VLAN from " +
                  std::to_string(kMinVlan) + " to " + std::to_string(kMaxVlan));
  }
  return vlan;
}

WatchedBridge parse_watched_bridge(const std::string &text) {
  if (!is_printable(text)) {
    throw Refusal("a bridge's name has characters that cannot be printed");
  }
  const size_t before_vlan = text.find(kBeforeVlan);
  WatchedBridge bridge{text.substr(0, before_vlan), {}};
  if (bridge.name.empty()) {
    throw Refusal("'" + text + "' names no bridge");
  }
  if (bridge.name.size() > kMaxBridgeName) {
    throw Refusal("'" + bridge.name + "': a bridge's name has at most " + std::to_string(kMaxBridgeName) +
                  " octets");
  }
  if (before_vlan != std::string::npos) {
    bridge.vlan = parse_vlan(text, std::string_view(text).substr(before_vlan + 1));
  }
  return bridge;
}

void check_pair(const WatchedBridge &one, const WatchedBridge &other) {
  if (one.name == other.name) {
    throw Refusal("bridge '" + one.name + "' is named twice");
  }
  if (!one.vlan || !other.vlan) {
    throw Refusal("bridge '" + (one.vlan ? other : one).name +
                  "' needs a VLAN, as in NAME=VLAN: each of several bridges is the tree of one");
  }
  if (one.vlan == other.vlan) {
    throw Refusal("VLAN " + std::to_string(*one.vlan) + " has two bridges, '" + one.name + "' and '" +
                  other.name + "'");
  }
}

}  // namespace

std::vector<WatchedBridge> parse_watched_bridges(const std::vector<std::string> &texts) {
  if (texts.empty()) {
    throw Refusal("no bridge is named");
  }
  if (texts.size() > kMaxWatchedBridges) {
    throw Refusal("there are " + std::to_string(texts.size()) + " bridges, more than " +
                  std::to_string(kMaxWatchedBridges));
  }
  std::vector<WatchedBridge> bridges;
  for (const std::string &text : texts) {
    const WatchedBridge bridge = parse_watched_bridge(text);
    for (const WatchedBridge &before : bridges) {
      check_pair(before, bridge);
    }
    bridges.push_back(bridge);
  }
  return bridges;
}

std::string joined_names(const std::vector<WatchedBridge> &bridges) {
  std::string names;
  for (const WatchedBridge &bridge : bridges) {
    names += (names.empty() ? "" : ",") + bridge.name;
  }
  if (names.size() <= kMaxSwitchName) {
    return names;
  }
  return bridges.front().name + " and " + std::to_string(bridges.size() - 1) + " more";
}

}  // namespace stpswitch
