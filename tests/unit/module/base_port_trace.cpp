#include "base_port_trace.h"

#include <cstdio>

namespace {

std::string walk(const std::string &text) {
  return logged("validate_port_id_for_snmp_search_new(LINE)" + text + "\\n");
}

std::string walk_rejection(const std::string &text) {
  return logged_rejection("validate_port_id_for_snmp_search_new" + text + "\\n");
}

Trace listed(const std::string &list) {
  return {walk_rejection(":LINE Printing baseport bitset"), logged_rejection(list + "\\n")};
}

std::string shown(uint32_t number) { return std::to_string(static_cast<int32_t>(number)); }

// An entry that is found, and names this interface.
Trace entry_named(uint32_t if_index) {
  return {"free(16000)", "cmd_rsp_attr_get(0x0C02A001)",
          logged("\\nget_stp_entry_from_if_index(LINE) return if_index id: " + shown(if_index) + "\\n"),
          "cmd_rsp_attr_get(0x1402A015)", "stp_ifindex2dot1dportnum(" + fake::hex(if_index) + ")"};
}

std::string in_hex(uint32_t number) {
  char text[16];
  snprintf(text, sizeof text, "0x%x", number);
  return text;
}

}  // namespace

Trace base_ports_fetched() {
  return {"time(NULL)", "vlan_mgr_get_baseport_membership_range(1-4094)", "malloc(8196)", "time(NULL)"};
}

Trace base_ports_copied() { return {"time(NULL)", "malloc(8196)"}; }

Trace walked_to(uint16_t port, uint32_t if_index, const std::string &list, uint8_t selector) {
  const std::string found = std::to_string(port);
  const std::string index = shown(if_index);
  return listed(list) +
         Trace{walk_rejection("(LINE) found next port : " + found),
               "stp_dot1dportnum2ifindex(" + found + ")",
               walk(" found next port ifindex: " + index),
               "check_if_valid_base_port_ifindex(" + fake::hex(if_index) + ", " + std::to_string(selector) +
                   ")",
               walk_rejection("(LINE) found what we wanted ifindex: " + index),
               "free(8196)",
               logged("\\nvalidate_port_id_for_snmp_search_new(LINE): return SUCCESS with  port_id(" + found +
                      "), in_if_index(" + index + "), ret_if_index(" + index + ")\\n")};
}

Trace walked_to_the_end(const std::string &list) {
  return listed(list) + Trace{walk_rejection("(LINE) found next port : -1"),
                              walk_rejection("(LINE) No next port available in bitmap, return FAILURE"),
                              "free(8196)"};
}

Trace exact_port(uint16_t port, uint32_t if_index) {
  return {"stp_dot1dportnum2ifindex(" + std::to_string(port) + ")",
          "stp_valid_if_index(" + fake::hex(if_index) + ")",
          "pcm_get_pc_for_port(" + fake::hex(if_index) + ")"};
}

Trace link_asked(uint32_t if_index) {
  return {"im_get_ifindex_oper_status_list(" + fake::hex(if_index) + ", 1)"};
}

Trace link_is_down(uint32_t if_index) {
  return {logged("get_stp_entry_with_port_id_from_vlan_mgr(LINE): Port " + in_hex(if_index) +
                 " is oper down, dont send the cmd to backend\\n")};
}

Trace port_queried(uint32_t command, const std::string &token, uint32_t if_index) {
  return sent(command, kGet, token, bytes({if_index}));
}

Trace port_queried_and_found(uint32_t command, const std::string &token, uint32_t if_index) {
  return port_queried(command, token, if_index) + entry_named(if_index);
}

Trace port_queried_in_vain(uint32_t command, const std::string &token, uint32_t if_index) {
  return port_queried(command, token, if_index) +
         Trace{logged("\\nget_stp_entry_from_if_index(LINE) cmd_req_snmp_send_recv() failed for GET\\n"),
               "free(16000)", logged_rejection("get_stp_entry_from_if_index failed\\n")};
}

Trace port_queried_and_not_named(uint32_t command, const std::string &token, uint32_t if_index,
                                 uint32_t named_if_index) {
  return port_queried(command, token, if_index) + entry_named(named_if_index) +
         Trace{"cmd_snmp_free_rx_hndl",
               logged("\\nget_stp_entry_with_port_id_from_vlan_mgr(LINE): returning FAILURE\\n")};
}
