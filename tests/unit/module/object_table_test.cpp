#include "stpsnmp/object_table.h"

#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "stpsnmp/lookup_handlers.h"

namespace {

struct Row {
  const char *suffix;
  int magic;
  int type;
  int access;
  FindVarMethod *handler;
  const char *handler_name;
};

constexpr Row kRows[] = {
    {".1.11.2", 9, 4, 1, get_vantrelStpExtensionsMIB, "get_vantrelStpExtensionsMIB"},
    {".1.14.1", 16, 66, 1, get_vantrelStpExtensionsMIB, "get_vantrelStpExtensionsMIB"},
    {".1.14.10", 17, 4, 1, get_vantrelStpExtensionsMIB, "get_vantrelStpExtensionsMIB"},
    {".1.14.2", 18, 66, 1, get_vantrelStpExtensionsMIB, "get_vantrelStpExtensionsMIB"},
    {".1.14.3", 19, 66, 1, get_vantrelStpExtensionsMIB, "get_vantrelStpExtensionsMIB"},
    {".1.14.8", 21, 66, 2, get_vantrelStpExtensionsMIB, "get_vantrelStpExtensionsMIB"},
    {".1.14.9", 22, 4, 1, get_vantrelStpExtensionsMIB, "get_vantrelStpExtensionsMIB"},
    {".1.6.1", 30, 2, 2, get_vantrelStpExtensionsMIB, "get_vantrelStpExtensionsMIB"},
    {".1.6.2", 31, 2, 2, get_vantrelStpExtensionsMIB, "get_vantrelStpExtensionsMIB"},
    {".1.6.7", 35, 2, 1, get_vantrelStpExtensionsMIB, "get_vantrelStpExtensionsMIB"},
    {".1.8.3", 37, 2, 2, get_vantrelStpExtensionsMIB, "get_vantrelStpExtensionsMIB"},
    {".1.8.2.1.1", 50, 2, 1, get_stpxLoopInconsistencyTable, "get_stpxLoopInconsistencyTable"},
    {".1.8.2.1.2", 51, 2, 1, get_stpxLoopInconsistencyTable, "get_stpxLoopInconsistencyTable"},
    {".1.8.2.1.3", 52, 2, 1, get_stpxLoopInconsistencyTable, "get_stpxLoopInconsistencyTable"},
    {".1.12.1.1.1", 54, 2, 1, get_stpxRSTPPortTable, "get_stpxRSTPPortTable"},
    {".1.12.1.1.2", 55, 2, 2, get_stpxRSTPPortTable, "get_stpxRSTPPortTable"},
    {".1.12.1.1.3", 56, 2, 1, get_stpxRSTPPortTable, "get_stpxRSTPPortTable"},
    {".1.12.2.1.1", 58, 2, 1, get_stpxRSTPPortRoleTable, "get_stpxRSTPPortRoleTable"},
    {".1.12.2.1.2", 59, 2, 1, get_stpxRSTPPortRoleTable, "get_stpxRSTPPortRoleTable"},
    {".1.12.2.1.3", 60, 2, 1, get_stpxRSTPPortRoleTable, "get_stpxRSTPPortRoleTable"},
    {".1.6.3.1.1", 61, 66, 2, get_stpxLongStpPortPathCostTable, "get_stpxLongStpPortPathCostTable"},
    {".1.5.1.1.1", 62, 2, 1, get_stpxRootGuardConfigTable, "get_stpxRootGuardConfigTable"},
    {".1.5.1.1.2", 63, 2, 2, get_stpxRootGuardConfigTable, "get_stpxRootGuardConfigTable"},
    {".1.5.2.1.1", 68, 2, 1, get_stpxRootInconsistencyTable, "get_stpxRootInconsistencyTable"},
    {".1.5.2.1.2", 69, 2, 1, get_stpxRootInconsistencyTable, "get_stpxRootInconsistencyTable"},
    {".1.5.2.1.3", 70, 2, 1, get_stpxRootInconsistencyTable, "get_stpxRootInconsistencyTable"},
    {".1.14.7.1.1", 86, 2, 1, get_stpxSMSTPortTable, "get_stpxSMSTPortTable"},
    {".1.14.7.1.2", 87, 4, 1, get_stpxSMSTPortTable, "get_stpxSMSTPortTable"},
    {".1.14.7.1.6", 91, 2, 2, get_stpxSMSTPortTable, "get_stpxSMSTPortTable"},
    {".1.14.7.1.7", 92, 2, 1, get_stpxSMSTPortTable, "get_stpxSMSTPortTable"},
    {".1.2.2.1.1", 99, 2, 1, get_stpxPVSTVlanTable, "get_stpxPVSTVlanTable"},
    {".1.2.2.1.2", 100, 2, 2, get_stpxPVSTVlanTable, "get_stpxPVSTVlanTable"},
    {".1.14.5.1.1", 101, 66, 1, get_stpxSMSTInstanceTable, "get_stpxSMSTInstanceTable"},
    {".1.14.5.1.2", 102, 4, 1, get_stpxSMSTInstanceTable, "get_stpxSMSTInstanceTable"},
    {".1.14.5.1.3", 103, 4, 1, get_stpxSMSTInstanceTable, "get_stpxSMSTInstanceTable"},
    {".1.14.5.1.4", 104, 2, 1, get_stpxSMSTInstanceTable, "get_stpxSMSTInstanceTable"},
    {".1.14.5.1.5", 105, 4, 1, get_stpxSMSTInstanceTable, "get_stpxSMSTInstanceTable"},
    {".1.14.5.1.6", 106, 66, 1, get_stpxSMSTInstanceTable, "get_stpxSMSTInstanceTable"},
    {".1.13.1.1.1", 107, 2, 1, get_stpxRPVSTPortTable, "get_stpxRPVSTPortTable"},
    {".1.13.1.1.2", 108, 2, 1, get_stpxRPVSTPortTable, "get_stpxRPVSTPortTable"},
    {".1.13.1.1.3", 109, 4, 1, get_stpxRPVSTPortTable, "get_stpxRPVSTPortTable"},
    {".1.8.1.1.1", 115, 2, 1, get_stpxLoopGuardConfigTable, "get_stpxLoopGuardConfigTable"},
    {".1.8.1.1.3", 117, 2, 2, get_stpxLoopGuardConfigTable, "get_stpxLoopGuardConfigTable"},
    {".1.3.1.1.1", 118, 2, 1, get_stpxInconsistencyTable, "get_stpxInconsistencyTable"},
    {".1.3.1.1.2", 119, 2, 1, get_stpxInconsistencyTable, "get_stpxInconsistencyTable"},
    {".1.3.1.1.3", 120, 4, 1, get_stpxInconsistencyTable, "get_stpxInconsistencyTable"},
};

std::string suffix_of(const variable7 &entry) {
  std::ostringstream text;
  for (int i = 0; i < entry.namelen; ++i) {
    text << '.' << entry.name[i];
  }
  return text.str();
}

static_assert(std::size(stp_extensions_mib_variables) == 46 && std::size(kRows) == 46);

TEST(ObjectTable, RowByRow) {
  for (size_t i = 0; i < std::size(kRows); ++i) {
    const variable7 &entry = stp_extensions_mib_variables[i];
    const Row &row = kRows[i];
    SCOPED_TRACE("row " + std::to_string(i) + " " + row.suffix);
    EXPECT_EQ(suffix_of(entry), row.suffix);
    EXPECT_EQ(entry.magic, row.magic);
    EXPECT_EQ(entry.type, row.type);
    EXPECT_EQ(entry.acl, row.access);
    EXPECT_EQ(entry.findVar, row.handler) << row.handler_name;
  }
}

TEST(ObjectTable, RootIsTheEnterprisesArc9Arc82) {
  const oid root[] = {1, 3, 6, 1, 4, 1, ENTERPRISE, 9, 82};
  static_assert(std::size(stp_extensions_mib_variables_oid) == std::size(root));
  EXPECT_TRUE(std::equal(std::begin(root), std::end(root), stp_extensions_mib_variables_oid));
}

}  // namespace
