// Reads a bridge by its name.
#pragma once

#include <optional>
#include <string>

#include "sources/linux_bridge/forward_transitions.h"
#include "sources/linux_bridge/link_query.h"
#include "sources/linux_bridge/link_table.h"

namespace stpswitch {

struct BridgeReading {
  enum class Result {
    kTable,
    kNoInterface,
    kNoBridge,  // an interface of that name, but of another kind
    kUnsettled  // it changed again and again meanwhile
  };

  Result result;
  std::optional<LinkTable> table;
};

// Throws std::runtime_error when the kernel refuses to answer.
BridgeReading read_bridge(const std::string &name, ForwardTransitions *forward_transitions, LinkQuery *query);

}  // namespace stpswitch
