#include "row_store.h"

#include <algorithm>
#include <cstdlib>

namespace bench {
namespace {

constexpr size_t kMagics = UINT8_MAX + 1;
constexpr size_t kFirstCapacity = 64;

// The rows of one object, in an array that doubles.
struct Column {
  Row *rows;
  size_t count;
  size_t capacity;

  std::span<const Row> all() const { return {rows, count}; }
};

Column columns[kMagics];

bool precedes(Index left, Index right) {
  return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end());
}

bool grow(Column *column) {
  const size_t capacity = column->capacity == 0 ? kFirstCapacity : 2 * column->capacity;
  void *rows = realloc(column->rows, capacity * sizeof(Row));
  if (rows == nullptr) {
    return false;
  }
  column->rows = static_cast<Row *>(rows);
  column->capacity = capacity;
  return true;
}

}  // namespace

bool add_row(uint8_t magic, const Row &row) {
  Column &column = columns[magic];
  if (column.count > 0 && !precedes(column.rows[column.count - 1].arcs(), row.arcs())) {
    return false;
  }
  if (column.count == column.capacity && !grow(&column)) {
    return false;
  }
  column.rows[column.count++] = row;
  return true;
}

const Row *find_row(uint8_t magic, Index index) {
  const std::span<const Row> rows = columns[magic].all();
  const auto found = std::lower_bound(rows.begin(), rows.end(), index, [](const Row &row, Index asked) {
    return precedes(row.arcs(), asked);
  });
  return found == rows.end() || precedes(index, found->arcs()) ? nullptr : &*found;
}

const Row *first_row_after(uint8_t magic, Index index) {
  const std::span<const Row> rows = columns[magic].all();
  const auto found = std::upper_bound(rows.begin(), rows.end(), index, [](Index asked, const Row &row) {
    return precedes(asked, row.arcs());
  });
  return found == rows.end() ? nullptr : &*found;
}

void drop_rows() {
  for (Column &column : columns) {
    for (const Row &row : column.all()) {
      free(row.octets);
    }
    free(column.rows);
    column = {};
  }
}

}  // namespace bench
