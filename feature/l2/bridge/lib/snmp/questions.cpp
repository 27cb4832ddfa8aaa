#include "questions.h"

#include <algorithm>

#include "diagnostics.h"
#include "object_values.h"
#include "platform/stp_protocol.h"
#include "query/ask.h"
#include "stpsnmp/context.h"

namespace stpbridge {

using stpsnmp::diagnostics::kRejection;
using stpsnmp::diagnostics::shown;
using stpsnmp::query::Key;
using stpsnmp::query::single_tree;
using stpsnmp::query::TreeRange;

const Reply *Questions::tree() { return answer({Kind::kTree, 0}); }

Row Questions::port(uint32_t port) {
  const Row found = row({Kind::kPort, port});
  if (found.reply != nullptr && found.port != port) {
    STP_LOG(kRejection, "%s: asked for bridge port %d, got %d\n", __func__, shown(port), shown(found.port));
    return {};
  }
  return found;
}

// A row that does not advance would have a manager walk in a circle.
Row Questions::port_behind(uint32_t port) {
  const Row found = row({Kind::kPortBehind, port});
  if (found.reply != nullptr && found.port <= port) {
    STP_LOG(kRejection, "%s: asked behind bridge port %d, got %d\n", __func__, shown(port),
            shown(found.port));
    return {};
  }
  return found;
}

Row Questions::row(Question question) {
  const Reply *const reply = answer(question);
  uint32_t port = 0;
  if (reply == nullptr || !read_number_in(*reply, STP_ATTRIBUTE_BRIDGE_PORT, kPortNumbers, &port)) {
    return {};
  }
  return {port, reply};
}

const Reply *Questions::answer(Question question) {
  const Record *const end = records_ + count_;
  const Record *const known =
      std::find_if(static_cast<const Record *>(records_), end,
                   [question](const Record &record) { return record.question == question; });
  if (known != end) {
    return known->reply ? &known->reply : nullptr;
  }
  Record &record = records_[next_];
  next_ = (next_ + 1) % kMaxRecords;
  count_ = std::min(count_ + 1, kMaxRecords);
  record.question = question;
  record.reply.release();
  // Each question that nobody answers may cost the agent a deadline: the first one speaks for the others.
  if (nobody_answers_) {
    return nullptr;
  }
  const int result = ask(question, &record.reply);
  nobody_answers_ = result != CMD_OK && result != CMD_NO_ENTRY;
  return record.reply ? &record.reply : nullptr;
}

int Questions::ask(Question question, Reply *reply) const {
  constexpr size_t kMaxKeys = 2;
  Key keys[kMaxKeys];
  size_t count = 0;
  TreeRange tree;
  if (names_tree_) {
    uint32_t number = 0;
    uint32_t is_vlan = 0;
    stp_get_vlan_or_mst_id_from_context(&number, &is_vlan);
    tree = single_tree(number);
    keys[count++] = {is_vlan != 0 ? STP_KEY_VLAN_TREE : STP_KEY_MST_TREE, &tree};
  }
  if (question.kind != Kind::kTree) {
    keys[count++] = {STP_KEY_BRIDGE_PORT, &question.port};
  }
  return stpsnmp::query::ask(
      question.kind == Kind::kTree ? STP_COMMAND_BRIDGE_TREES : STP_COMMAND_BRIDGE_PORTS,
      question.kind == Kind::kPortBehind ? CMD_ACTION_GET_NEXT : CMD_ACTION_GET, {keys, count}, reply);
}

}  // namespace stpbridge
