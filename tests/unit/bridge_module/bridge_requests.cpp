#include "bridge_requests.h"

#include <algorithm>
#include <cstring>
#include <sstream>

#include <gtest/gtest.h>

#include "dispatch.h"
#include "fake_platform.h"
#include "platform/agent_ext.h"

namespace {

const std::vector<oid> kBridgeMib{1, 3, 6, 1, 2, 1, 17};

std::string number(const char *type, uint32_t value) { return type + (" " + std::to_string(value)); }

oid group_of(const std::string &name) { return name.starts_with("1") ? 1 : 2; }

}  // namespace

std::vector<oid> arcs_of(const std::string &name) {
  std::vector<oid> arcs;
  if (!name.starts_with(".")) {
    arcs = kBridgeMib;
  }
  std::istringstream text(name);
  for (std::string arc; std::getline(text, arc, '.');) {
    if (!arc.empty()) {
      arcs.push_back(std::stoul(arc));
    }
  }
  return arcs;
}

std::string name_of(const oid *arcs, size_t count) {
  const bool is_below = count > kBridgeMib.size() && std::equal(kBridgeMib.begin(), kBridgeMib.end(), arcs);
  std::string name;
  for (size_t i = is_below ? kBridgeMib.size() : 0; i < count; ++i) {
    name += (name.empty() && is_below ? "" : ".") + std::to_string(arcs[i]);
  }
  return name;
}

std::string shown_value(const netsnmp_variable_list &binding) {
  const auto value = static_cast<uint32_t>(*binding.val.integer);
  switch (binding.type) {
    case ASN_NULL:
      return "nothing";
    case SNMP_NOSUCHOBJECT:
      return "noSuchObject";
    case SNMP_NOSUCHINSTANCE:
      return "noSuchInstance";
    case ASN_INTEGER:
      return number("INTEGER", value);
    case ASN_COUNTER:
      return number("Counter32", value);
    case ASN_TIMETICKS:
      return number("TimeTicks", value);
    case ASN_OCTET_STR:
      return "OCTETS " + fake::hex(binding.val.string, binding.val_len);
    case ASN_OBJECT_ID:
      return "OID " + name_of(binding.val.objid, binding.val_len / sizeof(oid));
    default:
      return "type " + std::to_string(binding.type);
  }
}

Answers answers_of(const Request &request, const Names &names) {
  std::vector<oid> root = kBridgeMib;
  // As it is registered: by groups for the default tree, as a whole in the contexts of others.
  if (request.context.empty()) {
    root.push_back(request.group);
  }
  std::string context = request.context;
  netsnmp_handler_registration registration{};
  registration.rootoid = root.data();
  registration.rootoid_len = root.size();
  registration.contextName = context.empty() ? nullptr : context.data();
  std::memcpy(and_context_name, request.platform_context.c_str(), request.platform_context.size() + 1);
  and_context_name_len = static_cast<uint32_t>(request.platform_context.size());

  std::vector<netsnmp_variable_list> bindings(names.size());
  std::vector<netsnmp_request_info> requests(names.size());
  for (size_t i = 0; i < names.size(); ++i) {
    const std::vector<oid> name = arcs_of(names[i]);
    snmp_set_var_objid(&bindings[i], name.data(), name.size());
    snmp_set_var_typed_value(&bindings[i], ASN_NULL, nullptr, 0);
    bindings[i].val.string = bindings[i].buf;
    requests[i].requestvb = &bindings[i];
    requests[i].inclusive = request.is_inclusive ? 1 : 0;
    requests[i].next = i + 1 < names.size() ? &requests[i + 1] : nullptr;
  }
  for (const size_t position : request.processed) {
    requests[position].processed = 1;
  }
  netsnmp_agent_request_info info{};
  info.mode = request.mode;
  EXPECT_EQ(stpbridge::answer_requests(nullptr, &registration, &info, requests.data()), SNMP_ERR_NOERROR);

  Answers answers;
  for (netsnmp_variable_list &binding : bindings) {
    answers.push_back(name_of(binding.name, binding.name_length) + " = " + shown_value(binding));
    snmp_reset_var_buffers(&binding);
  }
  and_context_name[0] = '\0';
  and_context_name_len = 0;
  return answers;
}

Answers get(const Names &names) {
  return answers_of({.mode = MODE_GET, .group = group_of(names.front())}, names);
}

Answers get_next(const Names &names) {
  return answers_of({.mode = MODE_GETNEXT, .group = group_of(names.front())}, names);
}
