// The columns that have values, table by table: how each is asked for, and what must be seen of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fake_platform.h"
#include "table_test.h"

// What a header routine does with a request for the column 1.3.9.
struct HeaderAnswer {
  int result;
  std::string row;
  bool is_cleared;  // the row holds nothing but zeros
  std::vector<oid> name;
};

// The trace behind the call that fails.
struct QueryFailures {
  Trace no_memory;
  Trace failed_send;  // with the code 5
  Trace no_reply;
};

struct TableColumn {
  const char *name;  // of the test
  FindVarMethod *handler;
  uint8_t magic;
  std::vector<oid> column;  // below the module's root
  // Hands a row full of other things to the table's header routine.
  HeaderAnswer (*header)(const std::vector<oid> &arcs, int exact, int magic);

  uint32_t mode;                     // of the spanning trees
  fake::Attributes value;            // what the process's entries hold beside their index
  std::vector<oid> index;            // of a row
  std::string served;                // its value
  std::string row;                   // as the header routine fills it
  std::vector<std::string> queries;  // for a GET of it: action, command, keys
  Trace before;                      // what precedes the line that opens a request
  Trace read;                        // behind the last request's buffer

  std::string next;                       // the row behind it
  std::vector<std::string> next_queries;  // for a GETNEXT of it
  std::vector<std::string> walk;          // the rows from the bare column on; none where the platform steps

  std::vector<QueryFailures> failures;  // of each query of the GET
  Trace refused = {};                   // behind the opening line of a GET with too many arcs

  // The attribute without which there is no row, and the trace behind its reading; 0 where there is none.
  uint32_t needed = 0;
  Trace without_needed = {};
  bool is_served_unchanged = false;  // that attribute

  // Of bridge ports: what is logged where none is found, and the value of one that is down, which is asked
  // for like any other where there is none.
  Trace not_found = {};
  std::optional<std::string> served_down = {};
};

std::vector<TableColumn> all_columns();
