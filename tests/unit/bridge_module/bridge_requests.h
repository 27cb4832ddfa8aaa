// Gives bindings to the handler as the agent does, and tells what becomes of them.
#pragma once

#include <string>
#include <vector>

#include "stpsnmp/agent.h"

using Names = std::vector<std::string>;
using Answers = std::vector<std::string>;

// Names stand below dot1dBridge, "2.15.1.3.7", or, with a dot before them, below the root. Answers are
// "2.7.0 = INTEGER 1", "2.7.1 = noSuchInstance", or, of a GETNEXT that finds nothing, "2.20 = nothing".
Answers get(const Names &names);
Answers get_next(const Names &names);

// One request, with what matters of it.
struct Request {
  int mode = MODE_GET;
  oid group = 2;
  std::string context = {};            // of the registration
  std::string platform_context = {};   // what the platform tells of the request
  bool is_inclusive = false;           // it may be answered with the very name that it begins with
  std::vector<size_t> processed = {};  // positions of bindings that are answered already
};
Answers answers_of(const Request &request, const Names &names);

// A binding's value: "INTEGER 3", "OCTETS 8001".
std::string shown_value(const netsnmp_variable_list &binding);

// The arcs of a name, below the root.
std::vector<oid> arcs_of(const std::string &name);
std::string name_of(const oid *arcs, size_t count);
