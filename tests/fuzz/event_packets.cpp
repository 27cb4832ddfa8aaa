// What arrives on the platform library's event socket: greetings, events and ends, in any order. Handlers get
// whole payloads of their class.
#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <net-snmp/library/fd_event_manager.h>
#include <net-snmp/library/snmp_alarm.h>

#include <array>
#include <cstring>

#include "event_subscription.h"
#include "platform/agent_ext.h"
#include "platform/stp_protocol.h"
#include "platform/xport.h"
#include "support/input.h"
#include "support/require.h"
#include "support/scripted_socket.h"

namespace wire = stpplatform::wire;

extern "C" void __wrap_send_v2trap(netsnmp_variable_list *bindings) {
  fuzz::require(bindings != nullptr, "a notification has bindings");
}

namespace {

// Sends every other one.
netsnmp_variable_list *handle(void *message, oid *trap_oid, size_t *trap_oid_len, int *status) {
  constexpr oid kTrap[] = {1, 3, 9};
  stp_tree_payload payload;
  std::memcpy(&payload, xport_payload_get(message), sizeof payload);
  std::copy(std::begin(kTrap), std::end(kTrap), trap_oid);
  *trap_oid_len = std::size(kTrap);
  *status = payload.tree % 2 == 0 ? 1 : 0;
  return nullptr;
}

void subscribe_to_all() {
  for (const uint32_t notification_class :
       {STP_NOTIFICATION_PORT_INCONSISTENCY, STP_NOTIFICATION_LOOP_INCONSISTENCY,
        STP_NOTIFICATION_ROOT_INCONSISTENCY, STP_NOTIFICATION_NEW_ROOT, STP_NOTIFICATION_TOPOLOGY_CHANGE,
        STP_NOTIFICATION_TREES}) {
    register_for_notification(notification_class, handle);
    set_notification_enable_disable_status(notification_class, 1);
  }
}

// What an octet of the input says of a packet, bit by bit.
enum Kind : uint8_t { kSilence = 1, kEnd = 2, kOwnHeader = 4, kOtherDescriptor = 8 };

class EventSwitch {
 public:
  explicit EventSwitch(fuzz::Input *input) : input_(*input) {}

  fuzz::Arrival next(const wire::MessageHeader &sent) {
    const auto kind = input_.number<uint8_t>();
    is_silent_ = (kind & kSilence) != 0;
    if (is_silent_) {
      return {CMD_TIMEOUT};
    }
    if ((kind & kEnd) != 0) {
      return {CMD_UNREACHABLE};
    }
    const bool is_greeted = sent.type == static_cast<uint16_t>(wire::MessageType::kSubscribe);
    fuzz::Arrival arrival{CMD_OK, input_.short_octets()};
    if ((kind & kOwnHeader) == 0) {
      events_ = is_greeted ? events_ + 1 : 0;
      fuzz::put_header(&arrival.octets, is_greeted ? wire::MessageType::kEvent : wire::MessageType::kHello,
                       events_);
    }
    if (is_greeted == ((kind & kOtherDescriptor) != 0)) {
      arrival.descriptor = external_readfd[0];  // any
    }
    return arrival;
  }

  bool is_silent() const { return is_silent_; }

 private:
  fuzz::Input &input_;
  uint32_t events_ = 0;
  bool is_silent_ = false;
};

bool is_connected() { return external_readfdlen != 0; }

void ring_next_alarm() {
  constexpr timeval kLongAgo{0, 1};
  if (snmp_alarm *const alarm = sa_find_next()) {
    alarm->t_nextM = kLongAgo;
    run_alarms();
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/) {
  netsnmp_register_loghandler(NETSNMP_LOGHANDLER_NONE, LOG_DEBUG);
  subscribe_to_all();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  EventSwitch events(&input);
  const fuzz::ScriptedSwitch script([&events](const wire::MessageHeader &sent) { return events.next(sent); });
  stpplatform::event_subscription().reset();
  stpplatform::event_subscription().follow_subscriptions();
  while (!input.is_over()) {
    if (!is_connected() || events.is_silent()) {
      ring_next_alarm();
    }
    if (is_connected()) {
      external_readfdfunc[0](external_readfd[0], external_readfd_data[0]);
    }
  }
  stpplatform::event_subscription().reset();
  return 0;
}
