#include "model/derived.h"

#include <openssl/evp.h>
#include <openssl/params.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>

namespace stpswitch {
namespace {

// IEEE 802.1Q clause 13.8: the signature key of the Configuration Digest.
constexpr std::array<uint8_t, 16> kSignatureKey = {0x13, 0xAC, 0x06, 0xA6, 0x2E, 0x47, 0xFD, 0x51,
                                                   0xF9, 0x5D, 0x2B, 0xA2, 0x43, 0xCD, 0x03, 0x46};

// The MST Configuration Table: two octets for each VLAN identifier, most significant first.
constexpr size_t kTableEntries = 4096;
using ConfigurationTable = std::array<uint8_t, 2 * kTableEntries>;

ConfigurationTable configuration_table(const SwitchState &state) {
  ConfigurationTable table{};
  for (const auto &[id, instance] : state.mst_instances) {
    for (uint32_t vlan = kMinVlan; vlan <= kMaxVlan; ++vlan) {
      if (instance.vlans.contains(vlan)) {
        const size_t entry = size_t{2} * vlan;
        table[entry] = static_cast<uint8_t>(id >> 8);
        table[entry + 1] = static_cast<uint8_t>(id & 0xFFU);
      }
    }
  }
  return table;
}

TreeSet mst_trees_of(const SwitchState &state, const VlanSet &vlans) {
  TreeSet trees;
  trees.insert(kCistId);
  for (const auto &[id, instance] : state.mst_instances) {
    if (instance.vlans.overlaps(vlans)) {
      trees.insert(id);
    }
  }
  return trees;
}

// A VLAN's tree has the VLAN's number.
TreeSet rapid_pvst_trees_of(const SwitchState &state, const VlanSet &vlans) {
  TreeSet trees = vlans;
  trees.erase(state.rapid_pvst.disabled_vlans);
  return trees;
}

// IEEE 802.1D clause 6.4.3. The members of a port-channel are full duplex (IEEE 802.1AX).
std::optional<bool> is_point_to_point(std::optional<LinkType> configured, std::optional<bool> half_duplex) {
  if (!configured || *configured != LinkType::kAuto) {
    return configured ? std::optional(*configured == LinkType::kPointToPoint) : std::nullopt;
  }
  return half_duplex ? std::optional(!*half_duplex) : std::nullopt;
}

bool is_mst(const SwitchState &state) { return state.settings.mode == SpanningTreeMode::kMst; }

struct FreeMac {
  void operator()(EVP_MAC *mac) const { EVP_MAC_free(mac); }
  void operator()(EVP_MAC_CTX *context) const { EVP_MAC_CTX_free(context); }
};

}  // namespace

std::optional<PathCostMethod> operational_path_cost_method(const Settings &settings) {
  const bool is_long = settings.path_cost_method && settings.mode == SpanningTreeMode::kMst;
  return is_long ? PathCostMethod::kLong : settings.path_cost_method;
}

std::map<uint32_t, std::optional<bool>> links_of_channels(const SwitchState &state) {
  std::map<uint32_t, std::optional<bool>> links;
  for (const auto &[number, channel] : state.port_channels) {
    links.emplace(number, channel.link_up.value_or(false));
  }
  for (const auto &[number, port] : state.ports) {
    if (port.channel == 0 || state.port_channels.at(port.channel).link_up) {
      continue;
    }
    std::optional<bool> &link = links.at(port.channel);
    if (link != true && port.link_up != false) {
      link = port.link_up;
    }
  }
  return links;
}

bool is_bridge_port(const Port &port) { return port.switchport && port.channel == 0; }

BridgePorts bridge_ports(const SwitchState &state) {
  constexpr bool kChannelsAreHalfDuplex = false;
  BridgePorts bridge_ports;
  if (!state.settings.mode) {
    return bridge_ports;
  }
  const std::map<uint32_t, std::optional<bool>> links = links_of_channels(state);
  for (const auto &[number, channel] : state.port_channels) {
    bridge_ports.emplace(
        channel.numbers.if_index,
        BridgePort{&channel, links.at(number), is_point_to_point(channel.link_type, kChannelsAreHalfDuplex)});
  }
  for (const auto &[number, port] : state.ports) {
    if (is_bridge_port(port)) {
      bridge_ports.emplace(
          port.numbers.if_index,
          BridgePort{&port, port.link_up, is_point_to_point(port.link_type, port.half_duplex)});
    }
  }
  return bridge_ports;
}

std::optional<PortRole> role_in(uint32_t tree, const BridgePort &port) {
  const std::optional<PortRole> stated = port.interface->role.in(tree);
  return stated && port.link_up == false ? PortRole::kDisabled : stated;
}

VlanSet vlans_in_use(const BridgePorts &ports) {
  VlanSet vlans;
  for (const auto &[if_index, port] : ports) {
    vlans.insert(port.interface->vlans);
  }
  return vlans;
}

TreeSet running_trees(const SwitchState &state, const VlanSet &vlans_in_use) {
  TreeSet trees;
  if (!state.settings.mode) {
    return trees;
  }
  if (is_mst(state)) {
    trees.insert(kCistId);
    for (const auto &[id, instance] : state.mst_instances) {
      trees.insert(id);
    }
    return trees;
  }
  trees = vlans_in_use;
  trees.erase(state.rapid_pvst.disabled_vlans);
  return trees;
}

TreePorts tree_ports(const SwitchState &state, const BridgePorts &ports) {
  TreePorts tree_ports;
  for (const auto &[if_index, port] : ports) {
    tree_ports.insert(if_index, is_mst(state) ? mst_trees_of(state, port.interface->vlans)
                                              : rapid_pvst_trees_of(state, port.interface->vlans));
  }
  return tree_ports;
}

VlanSet cist_vlans(const SwitchState &state) {
  VlanSet vlans;
  for (uint32_t vlan = kMinVlan; vlan <= kMaxVlan; ++vlan) {
    vlans.insert(vlan);
  }
  for (const auto &[id, instance] : state.mst_instances) {
    vlans.erase(instance.vlans);
  }
  return vlans;
}

std::map<uint32_t, VlanSet> mst_vlan_map(const SwitchState &state) {
  if (!state.settings.mode) {
    return {};
  }
  std::map<uint32_t, VlanSet> map = {{kCistId, cist_vlans(state)}};
  for (const auto &[id, instance] : state.mst_instances) {
    map.emplace(id, instance.vlans);
  }
  return map;
}

std::map<uint32_t, std::optional<uint32_t>> mst_remaining_hops(const SwitchState &state) {
  if (!state.settings.mode) {
    return {};
  }
  std::map<uint32_t, std::optional<uint32_t>> hops = {{kCistId, state.mst_cist.remaining_hops}};
  for (const auto &[id, instance] : state.mst_instances) {
    hops.emplace(id, instance.remaining_hops);
  }
  return hops;
}

std::optional<MstDigest> mst_config_digest(const SwitchState &state) {
  if (!state.mst.name) {
    return std::nullopt;
  }
  const ConfigurationTable table = configuration_table(state);
  const std::unique_ptr<EVP_MAC, FreeMac> mac(EVP_MAC_fetch(nullptr, "HMAC", nullptr));
  const std::unique_ptr<EVP_MAC_CTX, FreeMac> context(mac ? EVP_MAC_CTX_new(mac.get()) : nullptr);
  std::string hash = "MD5";
  const std::array<OSSL_PARAM, 2> parameters = {OSSL_PARAM_construct_utf8_string("digest", hash.data(), 0),
                                                OSSL_PARAM_construct_end()};
  MstDigest digest{};
  size_t length = 0;
  if (!context ||
      EVP_MAC_init(context.get(), kSignatureKey.data(), kSignatureKey.size(), parameters.data()) != 1 ||
      EVP_MAC_update(context.get(), table.data(), table.size()) != 1 ||
      EVP_MAC_final(context.get(), digest.data(), &length, digest.size()) != 1 || length != digest.size()) {
    throw std::runtime_error("this machine's OpenSSL does not offer HMAC-MD5, which the MST digest needs");
  }
  return digest;
}

}  // namespace stpswitch
