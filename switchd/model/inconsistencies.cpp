#include "model/inconsistencies.h"

#include <algorithm>
#include <tuple>

#include "platform/stp_protocol.h"

namespace stpswitch {
namespace {

void add_events(InconsistencyEventKind kind, const InconsistencyReport &before,
                const InconsistencyReport &after, SpanningTreeMode mode,
                std::vector<InconsistencyEvent> *events) {
  const TreePorts changes = after.changes_from(before);
  for (const auto &[if_index, trees] : changes.by_port()) {
    trees.for_each([&, port = if_index](uint32_t tree) {
      events->push_back({kind, tree, port, after.state_of({tree, port}), mode});
    });
  }
}

bool comes_before(const InconsistencyEvent &one, const InconsistencyEvent &other) {
  return std::tie(one.kind, one.tree, one.if_index) < std::tie(other.kind, other.tree, other.if_index);
}

const TreePorts &single_vlan_tree_ports(std::optional<SpanningTreeMode> mode, const TreePorts &tree_ports) {
  static const TreePorts kNone;
  return mode == SpanningTreeMode::kRapidPvst ? tree_ports : kNone;
}

// The states of a report count its kinds from bit 0: of the first report, kPvid and kType.
static_assert(STP_INCONSISTENT_PVID == 1U << 0 && STP_INCONSISTENT_TYPE == 1U << 1);

}  // namespace

InconsistencyReport::InconsistencyReport(const std::vector<Inconsistency> &kinds, const BridgePorts &ports,
                                         const TreePorts &tree_ports)
    : by_kind_(kinds.size()) {
  for (const auto &[if_index, tree_set] : tree_ports.by_port()) {
    const auto &stated = ports.at(if_index).interface->inconsistencies;
    for (size_t i = 0; i < kinds.size(); ++i) {
      const auto kind = stated.find(kinds[i]);
      if (kind != stated.end()) {
        TreeSet trees = tree_set;
        trees.intersect(kind->second);
        by_kind_[i].insert(if_index, trees);
        tree_ports_.insert(if_index, trees);
      }
    }
  }
}

uint32_t InconsistencyReport::state_of(const TreePort &tree_port) const {
  uint32_t state = 0;
  for (size_t i = 0; i < by_kind_.size(); ++i) {
    state |= by_kind_[i].contains(tree_port) ? 1U << i : 0U;
  }
  return state;
}

TreePorts InconsistencyReport::changes_from(const InconsistencyReport &before) const {
  TreePorts changes;
  for (size_t i = 0; i < by_kind_.size(); ++i) {
    changes.insert(differences(before.by_kind_[i], by_kind_[i]));
  }
  return changes;
}

Inconsistencies::Inconsistencies(std::optional<SpanningTreeMode> mode, const BridgePorts &ports,
                                 const TreePorts &tree_ports)
    : pvid_and_type({Inconsistency::kPvid, Inconsistency::kType}, ports,
                    single_vlan_tree_ports(mode, tree_ports)),
      loop({Inconsistency::kLoop}, ports, tree_ports),
      root({Inconsistency::kRoot}, ports, tree_ports) {}

std::vector<InconsistencyEvent> inconsistency_events(const Inconsistencies &before,
                                                     const Inconsistencies &after,
                                                     SpanningTreeMode mode_after) {
  std::vector<InconsistencyEvent> events;
  add_events(InconsistencyEventKind::kPvidAndType, before.pvid_and_type, after.pvid_and_type, mode_after,
             &events);
  add_events(InconsistencyEventKind::kLoop, before.loop, after.loop, mode_after, &events);
  add_events(InconsistencyEventKind::kRoot, before.root, after.root, mode_after, &events);
  std::sort(events.begin(), events.end(), comes_before);
  return events;
}

}  // namespace stpswitch
