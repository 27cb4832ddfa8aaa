// The MIB file against the object table: the agent library's own parser reads the one, and both must say the
// same of each object.
#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "stpsnmp/agent.h"
#include "stpsnmp/object_table.h"

#include <net-snmp/library/parse.h>
#include <net-snmp/mib_api.h>

namespace {

constexpr char kModule[] = "VANTREL-STP-EXTENSIONS-MIB";
constexpr int kNoType = 0;

using Oid = std::vector<oid>;

// What the two say of an object: the type in which its values are sent, and how it may be accessed.
struct Described {
  int type;
  int access;

  bool operator==(const Described &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Described &object) {
  return out << "type " << object.type << ", access " << object.access;
}

using Objects = std::map<Oid, Described>;

// Index columns are registered as readable and never answer: to managers they are not accessible.
bool is_index(const Oid &object) {
  static const std::vector<Oid> kIndexes = {
      {1, 2, 2, 1, 1},  {1, 3, 1, 1, 1},  {1, 3, 1, 1, 2},  {1, 5, 1, 1, 1},
      {1, 5, 2, 1, 1},  {1, 5, 2, 1, 2},  {1, 8, 1, 1, 1},  {1, 8, 2, 1, 1},
      {1, 8, 2, 1, 2},  {1, 12, 1, 1, 1}, {1, 12, 2, 1, 1}, {1, 12, 2, 1, 2},
      {1, 13, 1, 1, 1}, {1, 13, 1, 1, 2}, {1, 14, 5, 1, 1}, {1, 14, 7, 1, 1}};
  return std::find(kIndexes.begin(), kIndexes.end(), object) != kIndexes.end();
}

Objects registered_objects() {
  Objects objects;
  for (const variable7 &entry : stp_extensions_mib_variables) {
    const Oid suffix(entry.name, entry.name + entry.namelen);
    const int access = entry.acl == RWRITE ? MIB_ACCESS_READWRITE : MIB_ACCESS_READONLY;
    objects[suffix] = {entry.type, is_index(suffix) ? MIB_ACCESS_NOACCESS : access};
  }
  return objects;
}

int sent_type(int syntax) {
  switch (syntax) {
    case TYPE_INTEGER:
    case TYPE_INTEGER32:
      return ASN_INTEGER;
    case TYPE_OCTETSTR:
    case TYPE_BITSTRING:
      return ASN_OCTET_STR;
    case TYPE_UNSIGNED32:
      return ASN_UNSIGNED;
    default:
      return kNoType;
  }
}

class MibFile : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    setenv("MIBS", "", 1);
    setenv("MIBDIRS", MIB_DIRECTORIES, 1);
    netsnmp_init_mib();
    ASSERT_NE(netsnmp_read_module(kModule), nullptr);
  }

  static tree *root() {
    return get_tree(stp_extensions_mib_variables_oid, STP_EXTENSIONS_MIB_ROOT_LENGTH, get_tree_head());
  }

  // Every object below a node; tables and rows have no type that could be sent.
  static void collect(const tree *node, const Oid &suffix, Objects *objects) {
    for (const tree *child = node->child_list; child != nullptr; child = child->next_peer) {
      Oid below = suffix;
      below.push_back(child->subid);
      if (child->child_list == nullptr && child->access != 0 && sent_type(child->type) != kNoType) {
        (*objects)[below] = {sent_type(child->type), child->access};
      }
      collect(child, below, objects);
    }
  }
};

TEST_F(MibFile, StandsUnderTheModulesRoot) {
  ASSERT_NE(root(), nullptr);
  EXPECT_STREQ(root()->label, "vantrelStpExtensionsMIB");
}

TEST_F(MibFile, DescribesTheObjectsThatAreRegisteredAndNoOthers) {
  Objects described;
  collect(root(), {}, &described);
  EXPECT_EQ(described, registered_objects());
}

}  // namespace
