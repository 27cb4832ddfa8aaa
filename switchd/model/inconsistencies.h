// The inconsistencies that the spanning-tree process reports: those stated for ports, where port and tree
// exist so. And the events of their changes.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "model/derived.h"
#include "model/events.h"
#include "model/tree_ports.h"

namespace stpswitch {

// One report: the ports of trees that have any of its kinds of inconsistency.
class InconsistencyReport {
 public:
  // Bit 0 of a state stands for the first kind.
  InconsistencyReport(const std::vector<Inconsistency> &kinds, const BridgePorts &ports,
                      const TreePorts &tree_ports);

  const TreePorts &tree_ports() const { return tree_ports_; }
  const std::vector<TreePorts> &by_kind() const { return by_kind_; }
  uint32_t state_of(const TreePort &tree_port) const;  // 0: none

  // The ports of trees whose states differ.
  TreePorts changes_from(const InconsistencyReport &before) const;

 private:
  std::vector<TreePorts> by_kind_;
  TreePorts tree_ports_;
};

struct Inconsistencies {
  Inconsistencies(std::optional<SpanningTreeMode> mode, const BridgePorts &ports,
                  const TreePorts &tree_ports);

  InconsistencyReport pvid_and_type;  // of trees of single VLANs only
  InconsistencyReport loop;
  InconsistencyReport root;
};

// In the order of kinds, trees and interface indexes.
std::vector<InconsistencyEvent> inconsistency_events(const Inconsistencies &before,
                                                     const Inconsistencies &after,
                                                     SpanningTreeMode mode_after);

}  // namespace stpswitch
