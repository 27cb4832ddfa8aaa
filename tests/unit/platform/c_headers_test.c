/* The porting contract from C: every header compiles, every symbol links. Prints what is wrong; exits with 0
 * when nothing is.
 */
#include "platform/agent_ext.h"
#include "platform/bitmap_print.h"
#include "platform/bridge_mib.h"
#include "platform/cmd.h"
#include "platform/evhist.h"
#include "platform/im.h"
#include "platform/pcm.h"
#include "platform/stp.h"
#include "platform/stp_protocol.h"
#include "platform/vlan_mgr.h"
#include "platform/xport.h"
/**/
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int failures = 0;

#define EXPECT(condition)                                              \
  do {                                                                 \
    if (!(condition)) {                                                \
      fprintf(stderr, "line %d: %s is wrong\n", __LINE__, #condition); \
      ++failures;                                                      \
    }                                                                  \
  } while (0)

/* Taken by address, so that every one of them must be there. */
typedef void (*function)(void);
static const function functions[] = {
    (function)get_snmp_username,
    (function)get_snmp_sessionid,
    (function)register_for_notification,
    (function)unregister_for_notification,
    (function)set_notification_enable_disable_status,
    (function)build_varbind,
    (function)dot1d_stringNonZeroLength,
    (function)cmd_req_init,
    (function)cmd_req_cmdId_set,
    (function)cmd_req_action_set,
    (function)token_type_2len,
    (function)cmd_req_attr_add,
    (function)cmd_snmp_req_send_recv,
    (function)cmd_rsp_attr_get,
    (function)cmd_snmp_free_rx_hndl,
    (function)evhist_hist_event_subtype_check,
    (function)evhist_hist_event,
    (function)evhist_chk_int,
    (function)dbgprint,
    (function)im_get_next_ifindex,
    (function)im_get_ifindex_oper_status_list,
    (function)if_index_get_type,
    (function)if_index_eth_port_channel_init,
    (function)check_if_valid_base_port_ifindex,
    (function)pcm_get_pc_for_port,
    (function)stp_ifindex2dot1dportnum,
    (function)stp_dot1dportnum2ifindex,
    (function)stp_valid_if_index,
    (function)stp_get_mst_vlan_bmp,
    (function)stp_dot1d_bridgemib_get_mst_ctx,
    (function)vlan_mgr_get_baseport_membership_range,
    (function)xport_payload_get,
};

static void check_layouts(void) {
  EXPECT(sizeof(struct cmd_range_list) == 8 && offsetof(struct cmd_range_list, count) == 4);
  EXPECT(sizeof(struct cmd_range) == 8 && offsetof(struct cmd_range, last) == 4);
  EXPECT(sizeof(struct evhist_record) == 516 && offsetof(struct evhist_record, text) == 4);
  EXPECT(sizeof(struct im_oper_status_entry) == 536 &&
         offsetof(struct im_oper_status_entry, oper_status) == 20);
  EXPECT(sizeof(struct pcm_port_channel) == 10 && offsetof(struct pcm_port_channel, pc_if_index) == 6);
  EXPECT(sizeof(struct stp_vlan_bmp) == 516 && offsetof(struct stp_vlan_bmp, bits) == 4);
  EXPECT(sizeof(struct vlan_mgr_baseport_bmp) == 8196 && offsetof(struct vlan_mgr_baseport_bmp, bits) == 4);
}

static void check_calls(void) {
  const uint8_t octets[] = {1, 0};
  uint8_t type = 0;
  uint32_t if_index = 0;
  void *buffer = malloc(16000);
  void *reply = NULL;
  void *request = cmd_req_init(buffer, 16000);
  for (size_t i = 0; i < sizeof functions / sizeof functions[0]; ++i) {
    EXPECT(functions[i] != NULL);
  }
  EXPECT(request != NULL);
  EXPECT(cmd_req_cmdId_set(request, 104) == CMD_OK);
  EXPECT(cmd_req_attr_add(request, 0x01020227, &if_index, token_type_2len(0x01020227, &if_index)) == CMD_OK);
  EXPECT(cmd_snmp_req_send_recv(0xFE000000U, 171, request, "", 0, &reply, 0) == CMD_UNREACHABLE);
  EXPECT(reply == NULL);
  free(buffer);
  EXPECT(dot1d_stringNonZeroLength(octets, 2) == 1);
  EXPECT(if_index_eth_port_channel_init(&if_index, 7) == 0);
  EXPECT(if_index_get_type(if_index, &type) == 0 && type == IF_TYPE_PORT_CHANNEL);
  EXPECT(and_context_name_len == 0 && and_context_name[0] == '\0');
  EXPECT(strcmp(get_snmp_username(0), "") == 0 && get_snmp_sessionid(0) == 0);
  EXPECT(strcmp(evhist_dbg_modname, "STPSNMP") == 0);
  EXPECT(printf_curr_idx == 0);
}

int main(void) {
  check_layouts();
  check_calls();
  return failures == 0 ? 0 : 1;
}
