// Tables that are numbered by the bridge port alone. The port that a request means is found in the VLANs'
// membership, and the spanning-tree process is asked for its entry.
#pragma once

#include <cstddef>
#include <cstdint>

#include "call_site.h"
#include "tables/table.h"

namespace stpsnmp::tables {

inline constexpr size_t kBasePortArcs = 1;

// Finds the port and fetches its entry. With `is_down`, a port that is down is not asked for: `*is_down`
// becomes true, and the reply stays empty. True with `*port_id` the row's port.
bool find_base_port_row(const RowRequest &request, stp_command command, stp_key key, Reply *reply,
                        uint16_t *port_id, bool *is_down = nullptr);

// Answers with the row of this port. Returns 0.
template <class Row>
int answer_base_port(const RowRequest &request, uint32_t port_id, Row *row) {
  row->index = port_id;
  request.answer({row->index});
  return 0;
}

// A column that shows a setting, which a port has whether it is up or down.
template <class Row>
struct PortSetting {
  const char *object;  // as a failure names it
  stp_command command;
  int (*parse)(const Reply &reply, Row *row);  // 0, or what was wrong with the reply
};

// Fetches the setting of the port and answers. Returns 0, or another code with the failure logged for
// `caller`.
template <class Row>
int answer_setting(const RowRequest &request, const PortSetting<Row> &setting, Row *row,
                   CallSite caller = CallSite::here()) {
  Reply reply;
  uint16_t port_id = 0;
  if (!find_base_port_row(request, setting.command, STP_KEY_INTERFACE, &reply, &port_id)) {
    return kFailed;
  }
  if (!reply) {  // GCOVR_EXCL_START: a port that is found has a reply
    STP_LOG(kTrace, "\n%s(%d): resp_h is NULL\n", caller.function, caller.line);
    return kFailed;
  }  // GCOVR_EXCL_STOP
  const int result = setting.parse(reply, row);
  reply.release();
  if (result != 0) {
    STP_LOG(kTrace, "parse_reply_%s failed\n", setting.object);
    return result;
  }
  return answer_base_port(request, port_id, row);
}

}  // namespace stpsnmp::tables
