// What is known of a switch, computed from its state by plain loops over ports and trees: nothing here knows
// an image, or how a switch derives anything.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "model/switch_state.h"
#include "platform/cmd.h"
#include "reply_content.h"

// A request, its keys being well formed.
struct PlainQuestion {
  uint32_t command = 0;
  uint32_t action = 0;
  std::string user = {};
  struct Key {
    uint32_t token;
    uint32_t interface = 0;              // of keys that name an interface, or a bridge port
    std::vector<cmd_range> ranges = {};  // of those that name trees
  };
  std::vector<Key> keys = {};
};

class PlainModel {
 public:
  explicit PlainModel(const stpswitch::SwitchState &state);

  ReplyContent answer(const PlainQuestion &question) const;

  struct Interface {
    uint32_t if_index;
    uint32_t base_port;  // 0: none
    uint32_t channel;    // that it is a member of
    uint32_t pc_if_index;
    bool is_switched;
    bool is_bridge_port;
    std::optional<bool> link;
    std::optional<bool> point_to_point;
    const stpswitch::Interface *stated;
  };

  // In ascending order.
  const std::vector<Interface> &interfaces() const { return interfaces_; }
  const Interface *find(uint32_t if_index) const;

  // The bridge port numbers of the bridge ports that are members of one of them.
  std::set<uint32_t> members_of(const std::set<uint32_t> &vlans) const;

  // By instance, while a spanning tree runs.
  const std::map<uint32_t, std::set<uint32_t>> &mst_vlans() const { return mst_vlans_; }

 private:
  // A port of a tree.
  struct Row {
    uint32_t tree;
    const Interface *port;
    std::optional<uint32_t> role;
    uint32_t pvid_and_type;
    bool is_loop_inconsistent;
    bool is_root_inconsistent;
  };
  using IsMeant = bool (*)(const Row &);

  void find_interfaces();
  void find_trees();
  void find_rows();
  bool is_mst() const { return state_.settings.mode == stpswitch::SpanningTreeMode::kMst; }

  std::optional<Row> find_row(const PlainQuestion &question, uint32_t tree, uint32_t if_index,
                              IsMeant is_meant) const;
  const Interface *find_bridge_port(const PlainQuestion &question, uint32_t if_index) const;

  ReplyContent global_settings(const PlainQuestion &question) const;
  ReplyContent mst_region(const PlainQuestion &question) const;
  ReplyContent vlan_trees(const PlainQuestion &question) const;
  ReplyContent mst_instances(const PlainQuestion &question) const;
  ReplyContent ports_of_trees(const PlainQuestion &question) const;
  ReplyContent inconsistencies(const PlainQuestion &question) const;
  ReplyContent ports(const PlainQuestion &question) const;

  // The bridge in a tree.
  struct Bridge {
    stpswitch::ObservedTree observed;
    std::optional<uint32_t> max_age;
    std::optional<uint32_t> hello_time;
    std::optional<uint32_t> forward_delay;
    std::optional<uint32_t> hold_count;
    std::optional<stpswitch::ProtocolVersion> version;
  };
  Bridge bridge_in(uint32_t tree) const;
  ReplyContent bridge_trees(const PlainQuestion &question) const;
  ReplyContent bridge_ports_of_tree(const PlainQuestion &question) const;
  ReplyContent bridge_port(const Row &row) const;

  const stpswitch::SwitchState &state_;
  std::vector<Interface> interfaces_;
  std::set<uint32_t> vlans_in_use_;
  std::set<uint32_t> running_trees_;
  std::map<uint32_t, std::set<uint32_t>> mst_vlans_;
  std::vector<Row> rows_;  // by tree, then by interface index
};
