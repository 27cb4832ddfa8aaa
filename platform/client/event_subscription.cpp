#include "event_subscription.h"

#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <net-snmp/library/fd_event_manager.h>
#include <net-snmp/library/snmp_alarm.h>
#include <net-snmp/library/snmp_logging.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "deadline.h"
#include "message_check.h"
#include "notification_registry.h"
#include "packet_socket.h"
#include "settings.h"
#include "wire/events.h"
#include "wire/message.h"

namespace stpplatform {
namespace {

constinit EventSubscription the_event_subscription;

// For an alarm that is due as soon as the main loop runs.
constexpr uint64_t kSoonMs = 1;

// The longest packet that the switch sends on such a connection.
constexpr size_t kMaxPacketSize = wire::kMaxEventSize;
static_assert(kMaxPacketSize >= sizeof(wire::Hello));

static_assert(kMaxNotificationClasses <= wire::kMaxSubscribedClasses);

timeval interval(uint64_t ms) {
  constexpr uint64_t kMsPerSecond = 1000;
  constexpr uint64_t kUsPerMs = 1000;
  return {static_cast<time_t>(ms / kMsPerSecond), static_cast<suseconds_t>(ms % kMsPerSecond * kUsPerMs)};
}

}  // namespace

EventSubscription &event_subscription() { return the_event_subscription; }

void EventSubscription::follow_subscriptions() {
  if (!has_subscriptions()) {
    reset();
  } else if (alarm_ == 0 && !is_alarm_missing_) {
    schedule(kSoonMs);
  }
}

void EventSubscription::reset() {
  drop();
  unschedule();
  backoff_.reset();
  losses_ = 0;
  failure_reported_ = false;
  alarm_failure_reported_ = false;
  malformed_.reset();
}

void EventSubscription::on_alarm(unsigned int /*alarm*/, void *connection) {
  auto *self = static_cast<EventSubscription *>(connection);
  self->alarm_ = 0;  // it rings once
  self->on_due();
}

void EventSubscription::stand_in_for_alarm() {
  is_alarm_missing_ = false;
  const uint64_t now = monotonic_ms();
  if (now >= due_at_ms_) {
    on_due();
  } else {
    schedule(due_at_ms_ - now);
  }
}

void EventSubscription::on_due() {
  if (!is_open()) {
    open();
  } else if (is_greeted_) {
    subscribe();
  } else {
    failed(CMD_TIMEOUT, "the switch does not greet in time");
  }
}

void EventSubscription::open() {
  OwnedFd socket = connect_packet_socket(settings().socket_path);
  if (!socket.is_open()) {
    failed(CMD_UNREACHABLE, std::strerror(errno));
    return;
  }
  if (register_readfd(socket.get(), on_input, this) != FD_REGISTERED_OK) {
    failed(CMD_NO_MEMORY, "the agent cannot watch any more connections");
    return;
  }
  socket_ = socket.release();
  schedule(settings().deadline_ms);
}

void EventSubscription::on_input(int /*socket*/, void *connection) {
  auto *self = static_cast<EventSubscription *>(connection);
  // A handler may end the subscription, and the connection with it.
  for (int i = 0; i < kEventsPerWakeup && self->is_open() && self->receive_one(); ++i) {
  }
}

// False when there is nothing more to receive for now.
bool EventSubscription::receive_one() {
  alignas(uint32_t) uint8_t packet[kMaxPacketSize];
  const Deadline at_once(0);
  size_t size = 0;
  OwnedFd image;  // comes with the hello, and is not needed here
  const cmd_result result =
      receive_packet(socket_, packet, sizeof packet, at_once, &size, is_greeted_ ? nullptr : &image);
  switch (result) {
    case CMD_OK:
      return is_greeted_ ? take_event(packet, size) : take_hello(packet, size);
    case CMD_TIMEOUT:
      return false;
    default:
      failed(result, describe_failure(result));
      return false;
  }
}

bool EventSubscription::take_hello(const void *packet, size_t size) {
  uint32_t image_size = 0;
  if (!check_hello(packet, size, &image_size)) {
    failed(CMD_BAD_REPLY, describe_failure(CMD_BAD_REPLY));
    return false;
  }
  unschedule();
  if (!subscribe()) {
    return false;
  }
  is_greeted_ = true;
  greeted_at_ms_ = monotonic_ms();
  if (failure_reported_) {
    failure_reported_ = false;
    snmp_log(LOG_NOTICE, "stpplatform: %s: events: the switch is connected; connections lost so far: %u\n",
             settings().socket_path, losses_);
  }
  malformed_.tell();
  return true;
}

bool EventSubscription::take_event(void *packet, size_t size) {
  ReceivedEvent event;
  if (!check_event(packet, size, wire::next_sequence(sequence_), &event)) {
    failed(CMD_BAD_REPLY, describe_failure(CMD_BAD_REPLY));
    return false;
  }
  sequence_ = wire::next_sequence(sequence_);
  malformed_.tell();
  TransportMessage message{const_cast<void *>(event.payload)};
  deliver_notification(event.notification_class, &message);
  return true;
}

bool EventSubscription::subscribe() {
  struct {
    wire::Subscribe head;
    uint32_t classes[wire::kMaxSubscribedClasses];
  } message;
  const auto count = static_cast<uint32_t>(subscribed_classes(message.classes));
  const auto size = static_cast<uint32_t>(sizeof message.head + count * sizeof message.classes[0]);
  message.head = {
      {wire::kMagic, wire::kVersion, static_cast<uint16_t>(wire::MessageType::kSubscribe), size, 0}, count};
  const Deadline at_once(0);
  const cmd_result sent = send_packet(socket_, &message, size, at_once);
  if (sent != CMD_OK) {
    failed(sent, "the switch does not take the subscription");
    return false;
  }
  return true;
}

void EventSubscription::failed(cmd_result result, const char *what) {
  const uint64_t now = monotonic_ms();
  if (is_greeted_) {
    ++losses_;
    if (now - greeted_at_ms_ >= Backoff::kLongestMs) {
      backoff_.reset();
    }
  }
  drop();
  unschedule();
  backoff_.failed(now);
  // Messages that are not valid are counted even while the log already tells of a failure.
  const bool is_told = result == CMD_BAD_REPLY ? malformed_.take(now) : !failure_reported_;
  if (is_told) {
    failure_reported_ = true;
    snmp_log(LOG_WARNING, "stpplatform: %s: events: %s\n", settings().socket_path, what);
  }
  schedule(backoff_.wait_ms());
}

void EventSubscription::drop() {
  if (is_open()) {
    unregister_readfd(socket_);
    // No shutdown: a process that the agent forked off may hold the same socket.
    close(socket_);
    socket_ = -1;
  }
  is_greeted_ = false;
  sequence_ = 0;
}

void EventSubscription::schedule(uint64_t ms) {
  due_at_ms_ = monotonic_ms() + ms;
  alarm_ = snmp_alarm_register_hr(interval(ms), 0, on_alarm, this);
  is_alarm_missing_ = alarm_ == 0;
  if (!is_alarm_missing_) {
    alarm_failure_reported_ = false;
  } else if (!alarm_failure_reported_) {
    alarm_failure_reported_ = true;
    snmp_log(LOG_WARNING, "stpplatform: %s: events: the agent cannot set an alarm; requests take its place\n",
             settings().socket_path);
  }
}

void EventSubscription::unschedule() {
  if (alarm_ != 0) {
    snmp_alarm_unregister(alarm_);
    alarm_ = 0;
  }
  is_alarm_missing_ = false;
}

}  // namespace stpplatform
