#include "registration.h"

#include <algorithm>
#include <iterator>

#include "stpsnmp/agent.h"
#include "stpsnmp/object_table.h"

namespace stpsnmp {
namespace {

constexpr size_t kMaxObjectLength = STP_EXTENSIONS_MIB_ROOT_LENGTH + std::size(variable7{}.name);

// The agent's functions take OIDs as mutable and only read them, so they get a copy.
struct ObjectId {
  oid arcs[kMaxObjectLength];
  size_t length = 0;

  ObjectId() { append(stp_extensions_mib_variables_oid, STP_EXTENSIONS_MIB_ROOT_LENGTH); }
  explicit ObjectId(const variable7 &entry) : ObjectId() { append(entry.name, entry.namelen); }

 private:
  void append(const oid *more, size_t count) {
    std::copy_n(more, count, arcs + length);
    length += count;
  }
};

// The agent keeps a copy of every entry behind its handler for variable tables, and entries of other
// priorities under the same OID in one list with it. The lookup handler in that copy tells whose an entry is:
// no other module can have a function of this library there.
bool is_registered_by_this_module(const variable7 &entry, const ObjectId &id) {
  for (const netsnmp_subtree *subtree = netsnmp_subtree_find(id.arcs, id.length, nullptr, "");
       subtree != nullptr; subtree = subtree->children) {
    if (subtree->priority != DEFAULT_MIB_PRIORITY || subtree->reginfo == nullptr) {
      continue;
    }
    for (const netsnmp_mib_handler *handler = subtree->reginfo->handler; handler != nullptr;
         handler = handler->next) {
      if (handler->access_method == netsnmp_old_api_helper && handler->myvoid != nullptr &&
          static_cast<const variable *>(handler->myvoid)->findVar == entry.findVar) {
        return true;
      }
    }
  }
  return false;
}

// Asks the agent for the whole subtree at once. Where it finds nothing under that very OID, the call leaves
// the agent's lookup cache switched off.
void unregister_root() {
  ObjectId root;
  const int cache_size = netsnmp_get_lookup_cache_size();
  unregister_mib(root.arcs, root.length);
  netsnmp_set_lookup_cache_size(cache_size);
}

}  // namespace

int register_objects() {
  return register_mib(kModuleName, reinterpret_cast<const variable *>(stp_extensions_mib_variables),
                      sizeof(variable7), STP_EXTENSIONS_MIB_OBJECTS, stp_extensions_mib_variables_oid,
                      STP_EXTENSIONS_MIB_ROOT_LENGTH);
}

void unregister_objects() {
  unregister_root();
  // The agent keeps the entries one by one. One that stays behind would call into a library that is gone.
  for (const variable7 &entry : stp_extensions_mib_variables) {
    ObjectId id(entry);
    if (is_registered_by_this_module(entry, id)) {
      unregister_mib(id.arcs, id.length);
    }
  }
}

}  // namespace stpsnmp
