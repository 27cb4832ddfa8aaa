// Rows in memory, sorted, by object: what an agent can be at its fastest. No C++ runtime: the agent loads
// this.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "stpsnmp/agent.h"

namespace bench {

// The tables of ports of trees have the longest index.
inline constexpr size_t kMaxIndexArcs = 2;

struct Row {
  oid index[kMaxIndexArcs];
  size_t index_arcs;
  size_t length;   // of the value
  u_char *octets;  // where the value is a string: an allocation of its own
  int32_t number;  // else; unsigned ones have the same bits

  const void *value() const { return octets != nullptr ? static_cast<const void *>(octets) : &number; }
  std::span<const oid> arcs() const { return {index, index_arcs}; }
};

using Index = std::span<const oid>;

// Adds a row behind those that its object has; it takes the octets over. False where the row does not follow
// the last one, or there is no memory.
bool add_row(uint8_t magic, const Row &row);

// The row of exactly this index; the first one behind it. Null where there is none.
const Row *find_row(uint8_t magic, Index index);
const Row *first_row_after(uint8_t magic, Index index);

void drop_rows();

}  // namespace bench
