// Requests for the objects of BRIDGE-MIB and RSTP-MIB, and the messages behind their traps, while switch and
// process say what the input says: a value lies in memory, a step leads forward, and no reply is left.
#include <iterator>
#include <string>
#include <vector>

#include "dispatch.h"
#include "fake_platform.h"
#include "notifications.h"
#include "stpsnmp/agent.h"
#include "support/any_platform.h"
#include "support/input.h"
#include "support/require.h"

namespace {

constexpr oid kBridgeMib[] = {1, 3, 6, 1, 2, 1, 17};

// Names in a request of the agent's. It is registered by groups for the default tree, as a whole in the
// contexts of others.
class AgentRequest {
 public:
  explicit AgentRequest(fuzz::Input *input) : root_(std::begin(kBridgeMib), std::end(kBridgeMib)) {
    constexpr uint8_t kMostBindings = 4;
    const auto kind = input->number<uint8_t>();
    info_.mode = kind % 2 == 0 ? MODE_GET : MODE_GETNEXT;
    context_ = kind % 3 == 0 ? "vlan-7" : "";
    if (context_.empty()) {
      root_.push_back(1 + kind % 4 / 2);
    }
    registration_.rootoid = root_.data();
    registration_.rootoid_len = root_.size();
    registration_.contextName = context_.empty() ? nullptr : context_.data();
    bindings_.resize(1 + input->number<uint8_t>() % kMostBindings);
    requests_.resize(bindings_.size());
    for (size_t i = 0; i < bindings_.size(); ++i) {
      names_.push_back(any_name(input));
      snmp_set_var_objid(&bindings_[i], names_[i].data(), names_[i].size());
      snmp_set_var_typed_value(&bindings_[i], ASN_NULL, nullptr, 0);
      requests_[i].requestvb = &bindings_[i];
      requests_[i].next = i + 1 < bindings_.size() ? &requests_[i + 1] : nullptr;
    }
  }
  ~AgentRequest() {
    for (netsnmp_variable_list &binding : bindings_) {
      snmp_reset_var_buffers(&binding);
    }
  }
  AgentRequest(const AgentRequest &) = delete;
  AgentRequest &operator=(const AgentRequest &) = delete;

  void ask() {
    fuzz::require(
        stpbridge::answer_requests(nullptr, &registration_, &info_, requests_.data()) == SNMP_ERR_NOERROR,
        "the agent is told of no error");
    for (size_t i = 0; i < bindings_.size(); ++i) {
      check(bindings_[i], names_[i]);
    }
  }

 private:
  std::vector<oid> any_name(fuzz::Input *input) const {
    std::vector<oid> name = root_;
    const std::vector<oid> arcs = fuzz::any_arcs(input);
    name.insert(name.end(), arcs.begin(), arcs.end());
    return name;
  }

  void check(const netsnmp_variable_list &binding, const std::vector<oid> &asked) const {
    const int order = snmp_oid_compare(binding.name, binding.name_length, asked.data(), asked.size());
    if (info_.mode == MODE_GET || binding.type == ASN_NULL) {
      fuzz::require(order == 0, "what is not answered by another name keeps its own");
    } else {
      fuzz::require(order > 0, "a GETNEXT is about a name behind the one asked for");
    }
    if (binding.type != ASN_NULL && binding.val.string != nullptr) {
      // The sanitizers see what is not there.
      std::vector<uint8_t>(binding.val.string, binding.val.string + binding.val_len).clear();
    }
  }

  std::vector<oid> root_;
  std::string context_;
  netsnmp_handler_registration registration_{};
  netsnmp_agent_request_info info_{};
  std::vector<std::vector<oid>> names_;
  std::vector<netsnmp_variable_list> bindings_;
  std::vector<netsnmp_request_info> requests_;
};

void notify(fuzz::Input *input) {
  const notification_handler handler =
      input->number<uint8_t>() % 2 == 0 ? stpbridge::handle_new_root : stpbridge::handle_topology_change;
  fuzz::notify(input, handler);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  fuzz::set_up_platform(&input);
  fuzz::set_context(&input);
  while (!input.is_over()) {
    if (input.number<uint8_t>() % 4 != 3) {
      AgentRequest(&input).ask();
    } else {
      notify(&input);
    }
    fuzz::require(fake::live_replies() == 0, "every reply is released");
  }
  fake::reset();
  return 0;
}
