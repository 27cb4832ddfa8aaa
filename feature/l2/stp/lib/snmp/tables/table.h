// What the tables' routines have in common. A header routine finds the row that a request means, fills its
// record and writes the row's OID into the request; the lookup handler picks the column.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "diagnostics.h"
#include "platform/cmd.h"
#include "query/reply.h"
#include "result.h"
#include "search/entries.h"
#include "stpsnmp/agent.h"

namespace stpsnmp::tables {

using diagnostics::kRejection;
using diagnostics::kTrace;
using query::Reply;
using search::TreePort;

// The request that a header routine gets, and its answer.
class RowRequest {
 public:
  // `column` is the registered OID; `name` and `length` are the request's and are rewritten by the answer.
  // Clears the row and traces the request.
  template <class Row>
  RowRequest(const oid *column, size_t column_length, oid *name, size_t *length, int exact, Row *row)
      : RowRequest(column, column_length, name, length, exact) {
    *row = Row();
    trace();
  }

  cmd_action action() const { return exact_ != 0 ? CMD_ACTION_GET : CMD_ACTION_GET_NEXT; }

  // A GET names a row with as many arcs as the table's index has, or fewer. A GETNEXT may hold any number.
  bool has_too_many_arcs(size_t index_arcs) const {
    return exact_ != 0 && *length_ > column_length_ + index_arcs;
  }

  // The arc of the index at this position; `absent` where the request does not reach so far, or lies outside
  // the column.
  uint32_t index_arc(size_t position, uint32_t absent = 0) const {
    return position < arcs_ ? static_cast<uint32_t>(name_[column_length_ + position]) : absent;
  }

  // Makes the request's OID that of the row with this index.
  void answer(std::initializer_list<uint32_t> index) const;

 private:
  RowRequest(const oid *column, size_t column_length, oid *name, size_t *length, int exact);

  void trace() const;

  const oid *column_;
  size_t column_length_;
  oid *name_;
  size_t *length_;
  int exact_;
  size_t arcs_;  // behind the column's OID
};

}  // namespace stpsnmp::tables
