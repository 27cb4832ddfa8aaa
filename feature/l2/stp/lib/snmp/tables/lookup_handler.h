// A table's lookup handler is one declaration: the header routine that finds and fills the row, and the
// columns that have a value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "stpsnmp/agent.h"

namespace stpsnmp::tables {

// What a lookup handler returns for a column: null where there is no such instance.
struct Value {
  const void *data;
  size_t length;
};

template <class Row>
struct Column {
  uint8_t magic;  // magic.h
  Value (*value)(const Row &row);
};

// A column that serves a field of the row as it is.
template <auto kField, class Row>
Value field(const Row &row) {
  return {&(row.*kField), sizeof(row.*kField)};
}

// What a lookup handler returns for an index column: these are registered and never have a value.
inline u_char *index_column() {
  snmp_set_detail("");
  return nullptr;
}

// The row that a header routine fills; some header routines ask for the column, too.
template <class Header>
struct HeaderRoutine;

template <class Row>
struct HeaderRoutine<int (*)(const oid *, size_t, oid *, size_t *, int, Row *)> {
  using RowType = Row;
  static constexpr bool kWantsMagic = false;
};

template <class Row>
struct HeaderRoutine<int (*)(const oid *, size_t, oid *, size_t *, int, Row *, int)> {
  using RowType = Row;
  static constexpr bool kWantsMagic = true;
};

template <class Header, class Row>
u_char *serve(Header header, std::span<const Column<Row>> columns, const struct variable &vp, oid *name,
              size_t *length, int exact, size_t *var_len, Row *row) {
  int result = 0;
  if constexpr (HeaderRoutine<Header>::kWantsMagic) {
    result = header(vp.name, vp.namelen, name, length, exact, row, vp.magic);
  } else {
    result = header(vp.name, vp.namelen, name, length, exact, row);
  }
  if (result != 0) {
    return nullptr;
  }
  for (const Column<Row> &column : columns) {
    if (column.magic == vp.magic) {
      const Value value = column.value(*row);
      if (value.data != nullptr) {
        *var_len = value.length;
      }
      return static_cast<u_char *>(const_cast<void *>(value.data));
    }
  }
  return index_column();
}

}  // namespace stpsnmp::tables

// Defines the handler `name` (stpsnmp/lookup_handlers.h) of the table that `header` and `columns` make up.
// Its row lives until the next call.
#define STP_LOOKUP_HANDLER(name, header, columns)                                                         \
  u_char *name(struct variable *vp, oid *request, size_t *length, int exact, size_t *var_len,             \
               WriteMethod ** /*write_method*/) {                                                         \
    using Row = stpsnmp::tables::HeaderRoutine<decltype(&(header))>::RowType;                             \
    static Row row;                                                                                       \
    return stpsnmp::tables::serve<decltype(&(header)), Row>(header, columns, *vp, request, length, exact, \
                                                            var_len, &row);                               \
  }
