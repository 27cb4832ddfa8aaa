// Tables that are numbered by tree and bridge port.
#pragma once

#include <cstddef>
#include <cstdint>

#include <sys/time.h>

#include "call_site.h"
#include "tables/table.h"

namespace stpsnmp::tables {

inline constexpr size_t kTreePortArcs = 2;

// The position that a request names; the row begins with it.
template <class Row>
TreePort asked_tree_port(const RowRequest &request, Row *row) {
  const TreePort asked{request.index_arc(0), static_cast<uint16_t>(request.index_arc(1))};
  row->tree_id = asked.tree_id;
  row->port_id = asked.port_id;
  return asked;
}

void trace_tree_port(const TreePort &asked, CallSite caller = CallSite::here());

// Tells whether a walk gets on from `asked` to `found`; that it does not is logged for `caller`.
bool advances(const TreePort &found, const TreePort &asked, CallSite caller = CallSite::here());

// Logs for `caller` when a next search began and ended, and what it returned.
void trace_next_search(const timeval &begin, const timeval &end, int result, CallSite caller);

// Runs a next search and traces it for `caller`. Returns what it returns.
template <class Search>
bool run_next_search(const Search &search, CallSite caller = CallSite::here()) {
  timeval begin;
  gettimeofday(&begin, nullptr);
  const bool is_found = search();
  timeval end;
  gettimeofday(&end, nullptr);
  trace_next_search(begin, end, is_found ? 0 : kFailed, caller);
  return is_found;
}

// Reads the row's index, as far as the reply names it.
template <class Row>
void read_index(const Reply &reply, Row *row) {
  reply.read_number(STP_ATTRIBUTE_PORT_TREE, &row->tree_id);
  reply.read_number(STP_ATTRIBUTE_INTERFACE, &row->port_id);
}

// Runs `search` (TreePort *, Reply *) from the position that was asked for. True with the row's
// position and its reply; a walk that does not get on is logged for `caller`.
template <class Search>
bool find_tree_port(const RowRequest &request, const TreePort &asked, const Search &search, TreePort *found,
                    Reply *reply, CallSite caller = CallSite::here()) {
  *found = asked;
  if (!search(found, reply)) {
    return false;
  }
  const bool is_get = request.action() == CMD_ACTION_GET;
  return is_get || advances(*found, asked, caller);
}

// What a port of a tree has in these tables.
template <class Row>
struct TreePortValue {
  const char *table;                           // as a failure names it
  int (*parse)(const Reply &reply, Row *row);  // 0, or what was wrong with the reply
};

// Answers with the row that a search has found, and releases its reply.
template <class Row>
int answer_tree_port(const RowRequest &request, const TreePortValue<Row> &value, uint16_t port_id,
                     Reply *reply, Row *row) {
  read_index(*reply, row);
  const int result = value.parse(*reply, row);
  reply->release();
  if (result != 0) {
    STP_LOG(kTrace, "parse_reply_%s failed\n", value.table);
    return result;
  }
  row->port_id = port_id;
  request.answer({row->tree_id, row->port_id});
  return 0;
}

}  // namespace stpsnmp::tables
