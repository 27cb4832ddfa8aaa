#include "agent.h"

#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <net-snmp/agent/net-snmp-agent-includes.h>
#include <net-snmp/library/fd_event_manager.h>
#include <net-snmp/library/snmp_alarm.h>

#include <gtest/gtest.h>
#include <poll.h>

#include <chrono>
#include <sstream>
#include <thread>
#include <utility>

#include "comes_true.h"
#include "injector.h"
#include "main_loop.h"

namespace {

std::string latest_response;
std::vector<std::string> notifications;

const std::pair<std::string, std::string> kRoots[] = {
    {agent::kExtensions, ".1.3.6.1.4.1." + std::to_string(ENTERPRISE) + ".9.82"},
    {agent::kBridge, ".1.3.6.1.2.1.17"}};

std::string name_of(const oid *arcs, size_t count) {
  std::string name;
  for (size_t i = 0; i < count; ++i) {
    name += "." + std::to_string(arcs[i]);
  }
  for (const auto &[abbreviation, root] : kRoots) {
    if (name.starts_with(root + ".")) {
      return abbreviation + name.substr(root.size());
    }
  }
  return name;
}

std::vector<oid> arcs_of(const std::string &name) {
  std::string whole = name;
  for (const auto &[abbreviation, root] : kRoots) {
    if (name.starts_with(abbreviation)) {
      whole = root + name.substr(abbreviation.size());
    }
  }
  std::vector<oid> arcs;
  std::istringstream text(whole);
  for (std::string arc; std::getline(text, arc, '.');) {
    if (!arc.empty()) {
      arcs.push_back(std::stoul(arc));
    }
  }
  return arcs;
}

std::string text_of(const netsnmp_variable_list &binding) {
  char value[2048];
  snprint_value(value, sizeof value, binding.name, binding.name_length, &binding);
  return name_of(binding.name, binding.name_length) + " = " + value;
}

std::string text_of(const netsnmp_pdu &response) {
  const netsnmp_variable_list &binding = *response.variables;
  if (response.errstat != SNMP_ERR_NOERROR || binding.type == SNMP_NOSUCHOBJECT ||
      binding.type == SNMP_NOSUCHINSTANCE || binding.type == SNMP_ENDOFMIBVIEW) {
    return agent::kNothing;
  }
  return text_of(binding);
}

// Whoever it is, the agent wants to know how much a response to it may hold. Nothing is ever sent.
netsnmp_session &manager() {
  static netsnmp_session *const opened = [] {
    netsnmp_session session;
    snmp_sess_init(&session);
    static char nobody[] = "udp:127.0.0.1:9";
    session.peername = nobody;
    session.version = SNMP_VERSION_2c;
    return snmp_open(&session);
  }();
  return *opened;
}

std::string ask(int command, const agent::Question &question) {
  static long transid = 0;
  netsnmp_pdu *const pdu = snmp_pdu_create(command);
  pdu->version = SNMP_VERSION_2c;
  pdu->transid = ++transid;
  pdu->contextName =
      static_cast<char *>(netsnmp_memdup(question.context.c_str(), question.context.size() + 1));
  pdu->contextNameLen = question.context.size();
  const std::vector<oid> name = arcs_of(question.name);
  snmp_add_null_var(pdu, name.data(), name.size());
  latest_response = "no response";
  handle_snmp_packet(NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE, &manager(), 0, pdu, nullptr);
  snmp_free_pdu(pdu);
  return latest_response;
}

}  // namespace

// The program's definition wins over the library's: where the agent sends its responses.
extern "C" int snmp_send(netsnmp_session * /*session*/, netsnmp_pdu *pdu) {
  latest_response = text_of(*pdu);
  snmp_free_pdu(pdu);
  return 1;
}

extern "C" void __wrap_send_v2trap(netsnmp_variable_list *bindings);

// The first binding is the notification's OID.
extern "C" void __wrap_send_v2trap(netsnmp_variable_list *bindings) {
  std::string &text =
      notifications.emplace_back(name_of(bindings->val.objid, bindings->val_len / sizeof(oid)));
  for (const auto *binding = bindings->next_variable; binding != nullptr; binding = binding->next_variable) {
    text += ", " + text_of(*binding);
  }
}

namespace agent {

void prepare() {
  static const bool is_done = [] {
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_ROLE, 1);
    netsnmp_ds_set_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_STRING_OUTPUT_FORMAT, NETSNMP_STRING_OUTPUT_HEX);
    init_agent("faults");
    snmp_enable_calllog();  // nobody is called, and nothing is printed
    return true;
  }();
  static_cast<void>(is_done);
}

std::string get(const Question &question) { return ask(SNMP_MSG_GET, question); }

std::string get_next(const Question &question) { return ask(SNMP_MSG_GETNEXT, question); }

std::vector<std::string> walk(const Question &root) {
  std::vector<std::string> answers;
  Question question = root;
  for (;;) {
    const std::string answer = get_next(question);
    if (!answer.starts_with(root.name + ".")) {
      return answers;
    }
    question.name = answer.substr(0, answer.find(' '));
    answers.push_back(answer);
  }
}

bool has_context(const std::string &name) {
  const std::vector<oid> root = arcs_of(kBridge);
  const netsnmp_subtree *const found = netsnmp_subtree_find(root.data(), root.size(), nullptr, name.c_str());
  return found != nullptr && name_of(found->name_a, found->namelen) == name_of(root.data(), root.size());
}

namespace {

void turn_main_loop() {
  if (run_main_loop_once() == 0) {
    std::this_thread::yield();
  }
  run_alarms();
}

}  // namespace

bool run_until(const std::function<bool()> &condition) { return comes_true(condition, turn_main_loop); }

void run_until_struck_or(const std::function<bool()> &condition) {
  constexpr int kTurnsBehind = 20;
  EXPECT_TRUE(run_until([&condition] { return faults::has_struck() || condition(); }));
  for (int turn = 0; turn < kTurnsBehind && !condition(); ++turn) {
    turn_main_loop();
  }
}

bool wait_for_input() {
  std::vector<pollfd> entries(static_cast<size_t>(external_readfdlen));
  for (size_t i = 0; i < entries.size(); ++i) {
    entries[i] = {external_readfd[i], POLLIN, 0};
  }
  return poll(entries.data(), entries.size(),
              static_cast<int>(std::chrono::milliseconds(kHangGuard).count())) > 0;
}

size_t sent_notifications() { return notifications.size(); }

std::vector<std::string> take_notifications() { return std::exchange(notifications, {}); }

int watched_descriptors() { return external_readfdlen; }

bool has_alarm() { return sa_find_next() != nullptr; }

}  // namespace agent
