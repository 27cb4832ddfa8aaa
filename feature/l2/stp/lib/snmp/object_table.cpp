#include "stpsnmp/object_table.h"

#include "config.h"
#include "magic.h"
#include "stpsnmp/lookup_handlers.h"

using namespace stpsnmp;

namespace {

constexpr u_short kReadOnly = NETSNMP_OLDAPI_RONLY;
constexpr u_short kReadWrite = NETSNMP_OLDAPI_RWRITE;

}  // namespace

const oid stp_extensions_mib_variables_oid[] = {1, 3, 6, 1, 4, 1, STPSNMP_ENTERPRISE, 9, 82};

// Grouped by handler, not by OID. The read-write objects refuse a SET all the same: their handlers offer no
// write method.
// clang-format off
const struct variable7 stp_extensions_mib_variables[] = {
    {kMstRegionName,                  ASN_OCTET_STR, kReadOnly,  get_vantrelStpExtensionsMIB,      3, {1, 11, 2}},
    {kSmstMaxInstances,               ASN_UNSIGNED,  kReadOnly,  get_vantrelStpExtensionsMIB,      3, {1, 14, 1}},
    {kSmstConfigPreStandardDigest,    ASN_OCTET_STR, kReadOnly,  get_vantrelStpExtensionsMIB,      3, {1, 14, 10}},
    {kSmstMaxInstanceId,              ASN_UNSIGNED,  kReadOnly,  get_vantrelStpExtensionsMIB,      3, {1, 14, 2}},
    {kSmstRegionRevision,             ASN_UNSIGNED,  kReadOnly,  get_vantrelStpExtensionsMIB,      3, {1, 14, 3}},
    {kSmstMaxHopCount,                ASN_UNSIGNED,  kReadWrite, get_vantrelStpExtensionsMIB,      3, {1, 14, 8}},
    {kSmstConfigDigest,               ASN_OCTET_STR, kReadOnly,  get_vantrelStpExtensionsMIB,      3, {1, 14, 9}},
    {kSpanningTreeType,               ASN_INTEGER,   kReadWrite, get_vantrelStpExtensionsMIB,      3, {1, 6, 1}},
    {kPathCostMode,                   ASN_INTEGER,   kReadWrite, get_vantrelStpExtensionsMIB,      3, {1, 6, 2}},
    {kPathCostOperMode,               ASN_INTEGER,   kReadOnly,  get_vantrelStpExtensionsMIB,      3, {1, 6, 7}},
    {kLoopGuardGlobalDefaultMode,     ASN_INTEGER,   kReadWrite, get_vantrelStpExtensionsMIB,      3, {1, 8, 3}},
    {kLoopInconsistencyTree,          ASN_INTEGER,   kReadOnly,  get_stpxLoopInconsistencyTable,   5, {1, 8, 2, 1, 1}},
    {kLoopInconsistencyPort,          ASN_INTEGER,   kReadOnly,  get_stpxLoopInconsistencyTable,   5, {1, 8, 2, 1, 2}},
    {kLoopInconsistencyState,         ASN_INTEGER,   kReadOnly,  get_stpxLoopInconsistencyTable,   5, {1, 8, 2, 1, 3}},
    {kRstpPortIndex,                  ASN_INTEGER,   kReadOnly,  get_stpxRSTPPortTable,            5, {1, 12, 1, 1, 1}},
    {kRstpPortSetting,                ASN_INTEGER,   kReadWrite, get_stpxRSTPPortTable,            5, {1, 12, 1, 1, 2}},
    {kRstpPortOperLinkType,           ASN_INTEGER,   kReadOnly,  get_stpxRSTPPortTable,            5, {1, 12, 1, 1, 3}},
    {kRstpPortRoleTree,               ASN_INTEGER,   kReadOnly,  get_stpxRSTPPortRoleTable,        5, {1, 12, 2, 1, 1}},
    {kRstpPortRolePort,               ASN_INTEGER,   kReadOnly,  get_stpxRSTPPortRoleTable,        5, {1, 12, 2, 1, 2}},
    {kRstpPortRole,                   ASN_INTEGER,   kReadOnly,  get_stpxRSTPPortRoleTable,        5, {1, 12, 2, 1, 3}},
    {kLongStpPortPathCost,            ASN_UNSIGNED,  kReadWrite, get_stpxLongStpPortPathCostTable, 5, {1, 6, 3, 1, 1}},
    {kRootGuardPort,                  ASN_INTEGER,   kReadOnly,  get_stpxRootGuardConfigTable,     5, {1, 5, 1, 1, 1}},
    {kRootGuardSetting,               ASN_INTEGER,   kReadWrite, get_stpxRootGuardConfigTable,     5, {1, 5, 1, 1, 2}},
    {kRootInconsistencyTree,          ASN_INTEGER,   kReadOnly,  get_stpxRootInconsistencyTable,   5, {1, 5, 2, 1, 1}},
    {kRootInconsistencyPort,          ASN_INTEGER,   kReadOnly,  get_stpxRootInconsistencyTable,   5, {1, 5, 2, 1, 2}},
    {kRootInconsistencyState,         ASN_INTEGER,   kReadOnly,  get_stpxRootInconsistencyTable,   5, {1, 5, 2, 1, 3}},
    {kSmstPortIndex,                  ASN_INTEGER,   kReadOnly,  get_stpxSMSTPortTable,            5, {1, 14, 7, 1, 1}},
    {kSmstPortFlags,                  ASN_OCTET_STR, kReadOnly,  get_stpxSMSTPortTable,            5, {1, 14, 7, 1, 2}},
    {kSmstPortAdminMode,              ASN_INTEGER,   kReadWrite, get_stpxSMSTPortTable,            5, {1, 14, 7, 1, 6}},
    {kSmstPortPreStandardStatus,      ASN_INTEGER,   kReadOnly,  get_stpxSMSTPortTable,            5, {1, 14, 7, 1, 7}},
    {kPvstVlanIndex,                  ASN_INTEGER,   kReadOnly,  get_stpxPVSTVlanTable,            5, {1, 2, 2, 1, 1}},
    {kPvstVlanState,                  ASN_INTEGER,   kReadWrite, get_stpxPVSTVlanTable,            5, {1, 2, 2, 1, 2}},
    {kSmstInstanceIndex,              ASN_UNSIGNED,  kReadOnly,  get_stpxSMSTInstanceTable,        5, {1, 14, 5, 1, 1}},
    {kSmstInstanceVlansLow,           ASN_OCTET_STR, kReadOnly,  get_stpxSMSTInstanceTable,        5, {1, 14, 5, 1, 2}},
    {kSmstInstanceVlansHigh,          ASN_OCTET_STR, kReadOnly,  get_stpxSMSTInstanceTable,        5, {1, 14, 5, 1, 3}},
    {kSmstInstanceValue,              ASN_INTEGER,   kReadOnly,  get_stpxSMSTInstanceTable,        5, {1, 14, 5, 1, 4}},
    {kSmstInstanceBridgeId,           ASN_OCTET_STR, kReadOnly,  get_stpxSMSTInstanceTable,        5, {1, 14, 5, 1, 5}},
    {kSmstInstanceCounter,            ASN_UNSIGNED,  kReadOnly,  get_stpxSMSTInstanceTable,        5, {1, 14, 5, 1, 6}},
    {kRpvstPortTree,                  ASN_INTEGER,   kReadOnly,  get_stpxRPVSTPortTable,           5, {1, 13, 1, 1, 1}},
    {kRpvstPortIndex,                 ASN_INTEGER,   kReadOnly,  get_stpxRPVSTPortTable,           5, {1, 13, 1, 1, 2}},
    {kRpvstPortFlags,                 ASN_OCTET_STR, kReadOnly,  get_stpxRPVSTPortTable,           5, {1, 13, 1, 1, 3}},
    {kLoopGuardPort,                  ASN_INTEGER,   kReadOnly,  get_stpxLoopGuardConfigTable,     5, {1, 8, 1, 1, 1}},
    {kLoopGuardSetting,               ASN_INTEGER,   kReadWrite, get_stpxLoopGuardConfigTable,     5, {1, 8, 1, 1, 3}},
    {kInconsistencyTree,              ASN_INTEGER,   kReadOnly,  get_stpxInconsistencyTable,       5, {1, 3, 1, 1, 1}},
    {kInconsistencyPort,              ASN_INTEGER,   kReadOnly,  get_stpxInconsistencyTable,       5, {1, 3, 1, 1, 2}},
    {kInconsistencyState,             ASN_OCTET_STR, kReadOnly,  get_stpxInconsistencyTable,       5, {1, 3, 1, 1, 3}},
};
// clang-format on
