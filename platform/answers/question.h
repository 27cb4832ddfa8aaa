// What a command is asked, and the commands: each looks at the question's action and keys and answers from
// the image.
#pragma once

#include <cstddef>
#include <cstdint>

#include "answers/answer.h"
#include "answers/image.h"
#include "platform/cmd.h"
#include "platform/stp_protocol.h"
#include "wire/attributes.h"

namespace stpplatform::answers {

class Question {
 public:
  // Reads the keys. False when the octets are not `count` well-formed attributes.
  bool read(cmd_action action, const void *attributes, size_t size, uint32_t count);

  cmd_action action() const { return action_; }

  // True when the keys are exactly these, in any order.
  bool has_no_key() const { return count_ == 0; }
  bool has_key(stp_key key) const { return count_ == 1 && keys_[0].token == key; }
  bool has_keys(stp_key one, stp_key other) const;

  // The value of a key that the question has. A number, or an interface index.
  uint32_t number(stp_key key) const;

  // The VLAN or MST instance. False when the list does not name exactly one: CMD_BAD_REQUEST.
  bool tree(stp_key key, uint32_t *tree) const;

 private:
  // No command has more.
  static constexpr uint32_t kMaxKeys = 2;

  const wire::Attribute &key(stp_key key) const;

  cmd_action action_ = CMD_ACTION_GET;
  uint32_t count_ = 0;
  wire::Attribute keys_[kMaxKeys];  // the first ones
};

// Return CMD_OK with the answer's attributes added, or another code, and then what they have added is void.
cmd_result answer_bridge_ports_of_tree(const Image &image, const Question &question, Answer *answer);
cmd_result answer_bridge_trees(const Image &image, const Question &question, Answer *answer);
cmd_result answer_global_settings(const Image &image, const Question &question, Answer *answer);
cmd_result answer_loop_guard(const Image &image, const Question &question, Answer *answer);
cmd_result answer_loop_inconsistencies(const Image &image, const Question &question, Answer *answer);
cmd_result answer_mst_instances(const Image &image, const Question &question, Answer *answer);
cmd_result answer_mst_ports(const Image &image, const Question &question, Answer *answer);
cmd_result answer_mst_region(const Image &image, const Question &question, Answer *answer);
cmd_result answer_port_settings(const Image &image, const Question &question, Answer *answer);
cmd_result answer_pvid_and_type_inconsistencies(const Image &image, const Question &question, Answer *answer);
cmd_result answer_rapid_pvst_ports(const Image &image, const Question &question, Answer *answer);
cmd_result answer_root_guard(const Image &image, const Question &question, Answer *answer);
cmd_result answer_root_inconsistencies(const Image &image, const Question &question, Answer *answer);
cmd_result answer_vlan_trees(const Image &image, const Question &question, Answer *answer);

}  // namespace stpplatform::answers
