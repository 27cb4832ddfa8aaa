// What the next search makes of the entry that the spanning-tree process puts behind its candidate.
#pragma once

#include <cstdint>

#include "platform/im.h"

namespace stpsnmp::search {

enum class NextRow {
  kFinish,    // the entry is the next row
  kNextTree,  // the tree's port-channels are done, and its physical ports came before: search the next tree
  kPhysicalEntry,  // a later tree starts with a port-channel: its physical ports come first
  kFail
};

enum class PortKind { kPhysical, kChannel };
enum class TreeOrder { kBelow, kEqual, kAbove };

struct NextRowRule {
  PortKind candidate;
  TreeOrder answered_tree;  // against the tree that the search stands in
  PortKind answer;
  NextRow outcome;
};

inline constexpr NextRowRule kNextRowRules[] = {
    {PortKind::kChannel, TreeOrder::kEqual, PortKind::kChannel, NextRow::kFinish},
    {PortKind::kChannel, TreeOrder::kEqual, PortKind::kPhysical, NextRow::kNextTree},
    {PortKind::kChannel, TreeOrder::kAbove, PortKind::kPhysical, NextRow::kFinish},
    {PortKind::kChannel, TreeOrder::kAbove, PortKind::kChannel, NextRow::kPhysicalEntry},
    {PortKind::kPhysical, TreeOrder::kEqual, PortKind::kPhysical, NextRow::kFinish},
    {PortKind::kPhysical, TreeOrder::kEqual, PortKind::kChannel, NextRow::kFail},
    {PortKind::kPhysical, TreeOrder::kAbove, PortKind::kPhysical, NextRow::kFinish},
    {PortKind::kPhysical, TreeOrder::kAbove, PortKind::kChannel, NextRow::kPhysicalEntry},
};

// Every type but that of a port-channel counts as a physical port.
constexpr PortKind port_kind_of(uint8_t if_type) {
  return if_type == IF_TYPE_PORT_CHANNEL ? PortKind::kChannel : PortKind::kPhysical;
}

constexpr TreeOrder order_of(uint32_t answered_tree, uint32_t in_tree) {
  if (answered_tree == in_tree) {
    return TreeOrder::kEqual;
  }
  return answered_tree < in_tree ? TreeOrder::kBelow : TreeOrder::kAbove;
}

// An answer from a tree below has no rule: the search fails.
constexpr NextRow decide(uint8_t candidate_type, uint32_t in_tree, uint32_t answered_tree,
                         uint8_t answered_type) {
  for (const NextRowRule &rule : kNextRowRules) {
    if (rule.candidate == port_kind_of(candidate_type) &&
        rule.answered_tree == order_of(answered_tree, in_tree) &&
        rule.answer == port_kind_of(answered_type)) {
      return rule.outcome;
    }
  }
  return NextRow::kFail;
}

}  // namespace stpsnmp::search
