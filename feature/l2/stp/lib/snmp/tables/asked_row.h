// Tables with one index arc whose rows, and their order, are the spanning-tree process's own: one question,
// one reply, one row.
#pragma once

#include <cstddef>

#include "call_site.h"
#include "query/ask.h"
#include "tables/table.h"

namespace stpsnmp::tables {

inline constexpr size_t kAskedRowArcs = 1;

template <class Row>
struct AskedRow {
  const char *table;  // as a failure names it
  stp_command command;
  query::Key key;
  int (*parse)(const Reply &reply, Row *row);  // 0, or what was wrong with the reply
};

// Fetches the row that the request means and answers with its index. Returns 0, or another code with the
// failure logged for `caller`.
template <class Row>
int answer_asked_row(const RowRequest &request, const AskedRow<Row> &asked, Row *row,
                     CallSite caller = CallSite::here()) {
  Reply reply;
  if (query::ask(asked.command, request.action(), {&asked.key, 1}, &reply, caller) != 0) {
    return kFailed;
  }
  const int result = reply ? asked.parse(reply, row) : kFailed;
  reply.release();
  if (result != 0) {
    STP_LOG(kTrace, "parse_reply_%s failed\n", asked.table);
    return result;
  }
  request.answer({row->index});
  return 0;
}

}  // namespace stpsnmp::tables
