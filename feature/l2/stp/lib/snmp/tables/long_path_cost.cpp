// Long path cost table: its column is registered and deliberately without an answer. The header routine is
// there for others that link against the module.
#include <optional>

#include "platform/im.h"
#include "platform/stp.h"
#include "search/entries.h"
#include "search/port_ids.h"
#include "stpsnmp/header_routines.h"
#include "stpsnmp/lookup_handlers.h"
#include "tables/table.h"

using namespace stpsnmp;
using namespace stpsnmp::tables;

namespace {

constexpr size_t kIndexArcs = 1;
constexpr uint32_t kFirstChannel = 1;

int failed(CallSite caller = CallSite::here()) {
  STP_LOG(kTrace, "\n%s(%d): returning FAILURE\n", caller.function, caller.line);
  return kFailed;
}

bool ask(cmd_action action, uint32_t *if_index, Reply *reply) {
  constexpr search::EntryKind kPorts = {STP_COMMAND_RAPID_PVST_PORTS, STP_KEY_INTERFACE, std::nullopt};
  return search::fetch_entry(kPorts, action, nullptr, if_index, reply);
}

// Finds the port's entry, for a walk the next one; behind the physical ports, port-channel 1 is tried.
int get_stp_entry_from_port_id(cmd_action action, uint16_t *port_id, Reply *reply) {
  uint32_t asked_if_index = 0;
  uint32_t if_index = 0;
  uint8_t type = 0;
  if (!search::validate_by_counting(action, &asked_if_index, &if_index, port_id, &type)) {
    return failed();
  }
  if (!ask(CMD_ACTION_GET, &if_index, reply)) {
    if (action == CMD_ACTION_GET) {
      return failed();
    }
    if (!ask(CMD_ACTION_GET_NEXT, &if_index, reply)) {
      if (type == IF_TYPE_PORT_CHANNEL) {
        return failed();
      }
      if_index_eth_port_channel_init(&if_index, kFirstChannel);
      type = IF_TYPE_PORT_CHANNEL;
      if (!ask(action, &if_index, reply)) {
        return failed();
      }
    }
  }
  if (action == CMD_ACTION_GET_NEXT && type == IF_TYPE_PORT_CHANNEL &&
      search::type_of(if_index) != IF_TYPE_PORT_CHANNEL) {
    STP_LOG(kTrace, "\n%s(%d) No more channel port found.\n", __func__, __LINE__);
    reply->release();
    return kFailed;
  }
  if (stp_ifindex2dot1dportnum(if_index, port_id) != 0) {
    reply->release();
    return failed();
  }
  if (!*reply) {  // GCOVR_EXCL_START: an entry that is found has a reply
    STP_LOG(kTrace, "\n%s(%d): resp_h is NULL\n", __func__, __LINE__);
    return kFailed;
  }  // GCOVR_EXCL_STOP
  return 0;
}

}  // namespace

int header_stpxLongStpPortPathCostTable(const oid *vp_name, size_t vp_namelen, oid *name, size_t *length,
                                        int exact, PathCostRow *row) {
  const RowRequest request(vp_name, vp_namelen, name, length, exact, row);
  if (request.has_too_many_arcs(kIndexArcs)) {
    return kFailed;
  }
  auto port_id = static_cast<uint16_t>(request.index_arc(0));
  Reply reply;
  if (get_stp_entry_from_port_id(request.action(), &port_id, &reply) != 0) {
    return kFailed;
  }
  reply.read_number(STP_ATTRIBUTE_INTERFACE, &row->index);
  if (reply.read_number(STP_ATTRIBUTE_PATH_COST, &row->value) != 0) {
    STP_LOG(kTrace, "parse_reply_stpxLongStpPortPathCostTable failed\n");
    row->value = 0;
  }
  reply.release();
  row->index = port_id;
  request.answer({row->index});
  return 0;
}

u_char *get_stpxLongStpPortPathCostTable(struct variable * /*vp*/, oid * /*name*/, size_t * /*length*/,
                                         int /*exact*/, size_t * /*var_len*/,
                                         WriteMethod ** /*write_method*/) {
  return nullptr;
}
