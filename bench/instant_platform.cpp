#include "instant_platform.h"

#include <cstring>

#include "platform/agent_ext.h"
#include "platform/cmd.h"
#include "platform/evhist.h"

namespace {

bool history_takes_everything = false;
evhist_record latest_record;
uint32_t answer = 4;

}  // namespace

void set_sinks(bool history_keeps) { history_takes_everything = history_keeps; }

void *cmd_req_init(void *buffer, uint32_t) { return buffer; }
int cmd_req_cmdId_set(void *, uint32_t) { return 0; }
int cmd_req_action_set(void *, uint32_t) { return 0; }
uint32_t token_type_2len(uint32_t, const void *) { return sizeof(uint32_t); }
int cmd_req_attr_add(void *request, uint32_t, const void *value, uint32_t length) {
  std::memcpy(request, value, length);
  return 0;
}
int cmd_snmp_req_send_recv(uint32_t, uint32_t, void *, const char *, uint32_t, void **reply, uint32_t) {
  *reply = &answer;
  return 0;
}
int cmd_rsp_attr_get(void *reply, uint32_t, void **value, uint32_t *length) {
  *value = reply;
  *length = sizeof(uint32_t);
  return 0;
}
void cmd_snmp_free_rx_hndl(void *) {}

const char *get_snmp_username(int) { return "operator"; }
uint32_t get_snmp_sessionid(int) { return 1; }
int register_for_notification(uint32_t, notification_handler) { return 0; }
int unregister_for_notification(uint32_t) { return 0; }
int set_notification_enable_disable_status(uint32_t, int) { return 0; }

int evhist_hist_event_subtype_check(uint32_t, uint32_t) { return history_takes_everything ? 0 : 1; }
int evhist_hist_event(uint32_t, uint32_t length, const void *record) {
  std::memcpy(&latest_record, record, length);
  return 0;
}
int evhist_chk_int(uint32_t, uint32_t, uint32_t, uint32_t) { return 0; }
char evhist_dbg_modname[] = "BENCH";
void dbgprint(int, const char *, int, const char *, ...) {}
