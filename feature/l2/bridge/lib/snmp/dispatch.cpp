#include "dispatch.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>

#include "objects.h"
#include "platform/agent_ext.h"
#include "questions.h"

namespace stpbridge {
namespace {

using Arcs = std::span<const oid>;

// What the agent takes as an error (RFC 3416 clause 4.2.1).
constexpr int kNoSuchObject = SNMP_NOSUCHOBJECT;
constexpr int kNoSuchInstance = SNMP_NOSUCHINSTANCE;

constexpr oid kScalarInstance = 0;

// The bridge port behind which the first row of a table stands.
constexpr uint32_t kBeforeAllPorts = 0;

// Where a name stands, seen from an object.
enum class Place : uint8_t { kBefore, kWithin, kBehind };

// What of a name stands below dot1dBridge; nothing of one that stands before it.
Arcs below_bridge_mib(const netsnmp_variable_list &binding) {
  const bool is_below = binding.name_length >= kBridgeMibLength &&
                        std::equal(kBridgeMib, kBridgeMib + kBridgeMibLength, binding.name);
  return is_below ? Arcs(binding.name + kBridgeMibLength, binding.name_length - kBridgeMibLength) : Arcs();
}

Place place_of(Arcs name, const Object &object) {
  const size_t common = std::min(name.size(), object.length);
  const int order = snmp_oid_compare(name.data(), common, object.name, common);
  if (order != 0) {
    return order < 0 ? Place::kBefore : Place::kBehind;
  }
  return name.size() < object.length ? Place::kBefore : Place::kWithin;
}

bool is_registered_for_default_tree(const netsnmp_handler_registration &registration) {
  return registration.contextName == nullptr || *registration.contextName == '\0';
}

// A request that the platform has not seen has no context there. Then nothing is known of its tree.
bool knows_tree(const netsnmp_handler_registration &registration) {
  return is_registered_for_default_tree(registration) ||
         std::strcmp(registration.contextName, and_context_name) == 0;
}

bool read(const Object &object, const Reply *reply, Value *value) {
  return reply != nullptr && object.read(*reply, value);
}

// Neither values of this size nor names below dot1dBridge need memory of their own, so that setting them
// cannot fail.
void set_value(netsnmp_variable_list *binding, const Value &value) {
  snmp_set_var_typed_value(binding, value.type, value.octets, value.size);
}

void answer_with(netsnmp_variable_list *binding, const Object &object, oid instance, const Value &value) {
  oid name[kBridgeMibLength + kColumnArcs + 1];
  oid *end = std::copy_n(kBridgeMib, kBridgeMibLength, name);
  end = std::copy_n(object.name, object.length, end);
  *end++ = instance;
  snmp_set_var_objid(binding, name, static_cast<size_t>(end - name));
  set_value(binding, value);
}

bool read_instance(const Object &object, Arcs instance, Questions *questions, Value *value) {
  if (object.read == nullptr || instance.size() != 1) {
    return false;
  }
  if (!object.is_column()) {
    return instance[0] == kScalarInstance && read(object, questions->tree(), value);
  }
  return instance[0] >= kPortNumbers.first && instance[0] <= kPortNumbers.last &&
         read(object, questions->port(static_cast<uint32_t>(instance[0])).reply, value);
}

// Returns 0, or what is to be told of a binding that has no value.
int answer_exactly(std::span<const Object> objects, netsnmp_variable_list *binding, Questions *questions) {
  const Arcs name = below_bridge_mib(*binding);
  for (const Object &object : objects) {
    if (place_of(name, object) != Place::kWithin) {
      continue;
    }
    Value value{};
    if (!read_instance(object, name.subspan(object.length), questions, &value)) {
      return kNoSuchInstance;
    }
    set_value(binding, value);
    return SNMP_ERR_NOERROR;
  }
  return kNoSuchObject;
}

// Of the instances behind `instance`, which may be empty, the first one that has a value.
bool answer_behind(const Object &object, Arcs instance, netsnmp_variable_list *binding,
                   Questions *questions) {
  Value value{};
  if (object.read == nullptr) {
    return false;
  }
  if (!object.is_column()) {
    if (!instance.empty() || !read(object, questions->tree(), &value)) {
      return false;
    }
    answer_with(binding, object, kScalarInstance, value);
    return true;
  }
  uint32_t port = instance.empty() ? kBeforeAllPorts
                                   : static_cast<uint32_t>(std::min<oid>(instance[0], kPortNumbers.last));
  // Each row stands behind the one before it, and no port has a number beyond the last.
  while (port < kPortNumbers.last) {
    const Row row = questions->port_behind(port);
    if (row.reply == nullptr) {
      return false;
    }
    port = row.port;
    if (object.read(*row.reply, &value)) {
      answer_with(binding, object, port, value);
      return true;
    }
  }
  return false;
}

// Leaves a binding as it is where none of the objects follows it: the agent goes on with what does.
void answer_next(std::span<const Object> objects, netsnmp_variable_list *binding, Questions *questions) {
  const Arcs name = below_bridge_mib(*binding);
  for (const Object &object : objects) {
    const Place place = place_of(name, object);
    if (place == Place::kBehind) {
      continue;
    }
    const Arcs instance = place == Place::kWithin ? name.subspan(object.length) : Arcs();
    if (answer_behind(object, instance, binding, questions)) {
      return;
    }
  }
}

void get(std::span<const Object> objects, netsnmp_agent_request_info *info, netsnmp_request_info *request,
         Questions *questions) {
  const int result = answer_exactly(objects, request->requestvb, questions);
  if (result != SNMP_ERR_NOERROR) {
    netsnmp_set_request_error(info, request, result);
  }
}

void get_next(std::span<const Object> objects, netsnmp_request_info *request, Questions *questions) {
  // A master agent's request may include the name that it begins with (RFC 2741 clause 5.2).
  if (request->inclusive == 0 || answer_exactly(objects, request->requestvb, questions) != SNMP_ERR_NOERROR) {
    answer_next(objects, request->requestvb, questions);
  }
}

}  // namespace

int answer_requests(netsnmp_mib_handler * /*handler*/, netsnmp_handler_registration *registration,
                    netsnmp_agent_request_info *info, netsnmp_request_info *requests) {
  // Where the tree is unknown, there is no object.
  const Arcs root(registration->rootoid, registration->rootoid_len);
  const std::span<const Object> objects =
      knows_tree(*registration) ? objects_of(root.subspan(kBridgeMibLength)) : std::span<const Object>();
  Questions questions(!is_registered_for_default_tree(*registration));
  for (netsnmp_request_info *request = requests; request != nullptr; request = request->next) {
    if (request->processed != 0) {
      continue;
    }
    if (info->mode == MODE_GET) {
      get(objects, info, request, &questions);
    } else {
      get_next(objects, request, &questions);
    }
  }
  return SNMP_ERR_NOERROR;
}

}  // namespace stpbridge
