// Command 105: the ports of the spanning trees of single VLANs and, asked by interface alone, the bridge
// ports whatever the mode is. Command 111: the ports of the CIST and the MST instances and, asked by
// interface alone, the bridge ports in MST mode.
#include "answers/bridge_ports.h"
#include "answers/question.h"

namespace stpplatform::answers {
namespace {

// What an entry has of its port, in groups.

void add_rapid_pvst_flags(const wire::ImageInterface &port, Answer *answer) {
  answer->add(STP_ATTRIBUTE_EDGE, port.edge);
  answer->add(STP_ATTRIBUTE_PEER, port.peer);
}

void add_mst_flags(const wire::ImageInterface &port, Answer *answer) {
  answer->add(STP_ATTRIBUTE_EDGE, port.edge);
  answer->add(STP_ATTRIBUTE_BOUNDARY, port.boundary);
  answer->add(STP_ATTRIBUTE_PEER, port.peer);
  answer->add(STP_ATTRIBUTE_DISPUTE, port.dispute);
  answer->add(STP_ATTRIBUTE_PRE_STANDARD_PEER, port.pre_standard_peer);
}

// Where an entry lacks one of them, the agent takes all of them for flags that are not set.
bool has_mst_flags(const wire::ImageInterface &port) {
  return load_shared(port.edge) != wire::kUnknown && load_shared(port.boundary) != wire::kUnknown &&
         load_shared(port.peer) != wire::kUnknown && load_shared(port.dispute) != wire::kUnknown;
}

// What the two commands differ in when they are asked for a port of a tree.
struct TreePortCommand {
  stp_mode mode;
  stp_key tree;
  stp_key interface;
  void (*add_flags)(const wire::ImageInterface &, Answer *);
};

constexpr TreePortCommand kRapidPvst = {STP_MODE_RAPID_PVST, STP_KEY_VLAN_TREE, STP_KEY_INTERFACE,
                                        add_rapid_pvst_flags};
constexpr TreePortCommand kMst = {STP_MODE_MST, STP_KEY_MST_TREE, STP_KEY_MST_INTERFACE, add_mst_flags};

cmd_result answer_tree_ports(const Image &image, const TreePortCommand &command, const Question &question,
                             Answer *answer) {
  if (!question.has_keys(command.tree, command.interface)) {
    return CMD_UNKNOWN_KEY;
  }
  TreePortKey asked{0, question.number(command.interface)};
  if (!question.tree(command.tree, &asked.tree)) {
    return CMD_BAD_REQUEST;
  }
  if (load_shared(image.settings().mode) != command.mode) {
    return CMD_NO_ENTRY;
  }
  TreePort port;
  const cmd_result result = image.find_tree_port(asked, question.action(), &port);
  if (result != CMD_OK) {
    return result;
  }
  answer->add_number(STP_ATTRIBUTE_PORT_TREE, port.tree);
  answer->add_number(STP_ATTRIBUTE_INTERFACE, load_shared(port.interface->if_index));
  answer->add(STP_ATTRIBUTE_PATH_COST, port.interface->path_cost);
  answer->add(STP_ATTRIBUTE_PORT_ROLE, port.entry->role);
  command.add_flags(*port.interface, answer);
  return CMD_OK;
}

void add_rapid_pvst_port(const wire::ImageInterface &port, Answer *answer) {
  answer->add(STP_ATTRIBUTE_PATH_COST, port.path_cost);
  answer->add(STP_ATTRIBUTE_POINT_TO_POINT, port.point_to_point);
  add_rapid_pvst_flags(port, answer);
}

void add_mst_port(const wire::ImageInterface &port, Answer *answer) {
  answer->add(STP_ATTRIBUTE_PATH_COST, port.path_cost);
  add_mst_flags(port, answer);
}

}  // namespace

cmd_result answer_rapid_pvst_ports(const Image &image, const Question &question, Answer *answer) {
  if (question.has_key(kRapidPvst.interface)) {
    return answer_bridge_port(image, question, kRapidPvst.interface, add_rapid_pvst_port, answer);
  }
  return answer_tree_ports(image, kRapidPvst, question, answer);
}

cmd_result answer_mst_ports(const Image &image, const Question &question, Answer *answer) {
  if (!question.has_key(kMst.interface)) {
    return answer_tree_ports(image, kMst, question, answer);
  }
  const wire::ImageInterface *port = find_bridge_port(image, question, kMst.interface);
  if (load_shared(image.settings().mode) != STP_MODE_MST || port == nullptr || !has_mst_flags(*port)) {
    return CMD_NO_ENTRY;
  }
  return answer_bridge_port(image, question, kMst.interface, add_mst_port, answer);
}

}  // namespace stpplatform::answers
