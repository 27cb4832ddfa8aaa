// What the library file says of itself: its exports, and what it needs.
#include <array>
#include <cstdio>
#include <set>
#include <sstream>
#include <string>

#include <gmock/gmock.h>

namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

std::string output_of(const std::string &command) {
  std::string output;
  // NOLINTNEXTLINE(cert-env33-c): the test's own literal commands
  FILE *pipe = popen(command.c_str(), "r");
  std::array<char, 4096> buffer;
  for (size_t got = fread(buffer.data(), 1, buffer.size(), pipe); got != 0;
       got = fread(buffer.data(), 1, buffer.size(), pipe)) {
    output.append(buffer.data(), got);
  }
  EXPECT_EQ(pclose(pipe), 0) << command;
  return output;
}

std::set<std::string> symbols(const std::string &option) {
  std::istringstream lines(output_of("nm -D -P " + option + " " MODULE_PATH));
  std::set<std::string> names;
  for (std::string line; std::getline(lines, line);) {
    names.insert(line.substr(0, line.find(' ')));
  }
  return names;
}

const std::set<std::string> kExports{
    "check_and_get_next_stp_physical_entry_for_logical",
    "deinit_stp_extensions_mib",
    "get_exact_stp_dual_indices_entry",
    "get_next_stp_dual_indices_entry_from_im",
    "get_stp_entry_from_if_index",
    "get_stpxInconsistencyTable",
    "get_stpxLongStpPortPathCostTable",
    "get_stpxLoopGuardConfigTable",
    "get_stpxLoopGuardGlobalDefaultMode",
    "get_stpxLoopInconsistencyTable",
    "get_stpxMSTMaxHopCount",
    "get_stpxMSTMaxInstanceNumber",
    "get_stpxMSTRegionName",
    "get_stpxMSTRegionRevision",
    "get_stpxPVSTVlanTable",
    "get_stpxRPVSTPortTable",
    "get_stpxRSTPPortRoleTable",
    "get_stpxRSTPPortTable",
    "get_stpxRootGuardConfigTable",
    "get_stpxRootInconsistencyTable",
    "get_stpxSMSTConfigDigest",
    "get_stpxSMSTConfigPreStandardDigest",
    "get_stpxSMSTInstanceTable",
    "get_stpxSMSTMaxHopCount",
    "get_stpxSMSTMaxInstanceID",
    "get_stpxSMSTMaxInstances",
    "get_stpxSMSTPortTable",
    "get_stpxSMSTRegionRevision",
    "get_stpxSpanningTreePathCostMode",
    "get_stpxSpanningTreePathCostOperMode",
    "get_stpxSpanningTreeType",
    "get_vantrelStpExtensionsMIB",
    "handle_noti_stpxInconsistencyUpdate",
    "handle_noti_stpxLoopInconsistencyUpdate",
    "handle_noti_stpxRootInconsistencyUpdate",
    "header_stpxInconsistencyTable",
    "header_stpxLongStpPortPathCostTable",
    "header_stpxLoopGuardConfigTable",
    "header_stpxLoopInconsistencyTable",
    "header_stpxPVSTVlanTable",
    "header_stpxRPVSTPortTable",
    "header_stpxRSTPPortRoleTable",
    "header_stpxRSTPPortTable",
    "header_stpxRootGuardConfigTable",
    "header_stpxRootInconsistencyTable",
    "header_stpxSMSTInstanceTable",
    "header_stpxSMSTPortTable",
    "init_stp_extensions_mib",
    "is_mst_context_passed",
    "set_bridge_id_prio",
    "stp_bmp_to_SMSTInstanceVlansMapped",
    "stp_dot1d_dbridge_mac_to_bridge_id",
    "stp_dot1d_dbridge_prio_to_bridge_id",
    "stp_dot1d_droot_mac_to_bridge_id",
    "stp_dot1d_droot_prio_to_bridge_id",
    "stp_dot1d_mac_to_bridge_id",
    "stp_dot1d_port_state",
    "stp_dot1d_port_to_dport",
    "stp_dot1d_prio_to_bridge_id",
    "stp_dot1d_sec_to_ticks",
    "stp_extensions_mib_variables",
    "stp_extensions_mib_variables_oid",
    "stp_get_next_dot1dportnum",
    "stp_get_port_oper_state",
    "stp_get_vlan_or_mst_id_from_context",
    "stp_is_member_port_of_pc",
    "stp_loopguard_global_default_mode_2_snmp_val",
    "stp_mac_to_bridge_id",
    "stp_mst_boundary_to_bit",
    "stp_mst_dispute_to_bit",
    "stp_mst_oper_edge_to_bit",
    "stp_mst_peer_to_bit",
    "stp_mst_prestd_status",
    "stp_oper_edge_to_bit",
    "stp_peer_to_bit",
    "stp_prio_to_bridge_id",
    "stp_set_index_from_context",
    "stp_set_index_from_context_for_set",
    "stp_set_index_from_context_for_set_intf",
    "stp_sstp_inc_to_bmp",
    "validate_port_id_for_snmp_search",
    "validate_port_id_for_snmp_search_from_im",
};

TEST(Library, ExportsItsInterfaceAndNothingElse) { EXPECT_EQ(symbols("--defined-only"), kExports); }

TEST(Library, TakesThePlatformFromOutside) {
  const std::set<std::string> undefined = symbols("--undefined-only");
  for (const char *name : {"cmd_req_init", "cmd_snmp_req_send_recv", "get_snmp_username", "evhist_hist_event",
                           "evhist_dbg_modname", "register_for_notification"}) {
    EXPECT_THAT(undefined, Contains(name));
  }
}

TEST(Library, NeedsThePlatformLibraryAndNoCxxRuntime) {
  const std::string dynamic = output_of("readelf -d " MODULE_PATH);
  EXPECT_THAT(dynamic, HasSubstr("[libstpplatform.so]"));
  EXPECT_THAT(dynamic, Not(HasSubstr("libstdc++")));
  EXPECT_THAT(dynamic, Not(HasSubstr("SYMBOLIC")));
  EXPECT_THAT(dynamic, Not(HasSubstr("NODELETE")));
}

}  // namespace
