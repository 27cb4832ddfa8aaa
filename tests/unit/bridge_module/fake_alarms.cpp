#include "fake_alarms.h"

#include <cstring>
#include <map>
#include <optional>
#include <utility>

#include "stpsnmp/agent.h"

namespace {

struct Alarm {
  SNMPAlarmCallback *callback;
  void *argument;
};

std::map<unsigned, Alarm> &set_alarms() {
  static std::map<unsigned, Alarm> alarms;
  return alarms;
}

unsigned latest_alarm = 0;
long latest_delay = 0;
bool refuses_alarms = false;
std::optional<size_t> registrations_until_refusal;
bool fails_creation = false;
bool fails_copy = false;

}  // namespace

namespace fake_agent {

void reset() {
  set_alarms().clear();
  refuses_alarms = false;
  registrations_until_refusal.reset();
  fails_creation = fails_copy = false;
}

size_t alarms() { return set_alarms().size(); }

bool fire_alarm() {
  if (set_alarms().empty()) {
    return false;
  }
  const auto [number, alarm] = *set_alarms().begin();
  set_alarms().erase(number);
  alarm.callback(number, alarm.argument);
  return true;
}

size_t fire_alarms(size_t limit) {
  size_t fired = 0;
  while (fired < limit && fire_alarm()) {
    ++fired;
  }
  return fired;
}

long latest_delay_us() { return latest_delay; }

void set_refuses_alarms(bool refuses) { refuses_alarms = refuses; }

void refuse_registration_after(size_t count) { registrations_until_refusal = count; }

void fail_next_creation() { fails_creation = true; }

void fail_next_copy() { fails_copy = true; }

}  // namespace fake_agent

extern "C" {

int __real_netsnmp_register_handler(netsnmp_handler_registration *registration);
netsnmp_handler_registration *__real_netsnmp_create_handler_registration(const char *name,
                                                                         Netsnmp_Node_Handler *handler,
                                                                         const oid *id, size_t id_length,
                                                                         int modes);
char *__real_strdup(const char *text);

unsigned __wrap_snmp_alarm_register_hr(timeval delay, unsigned flags, SNMPAlarmCallback *callback,
                                       void *argument);
void __wrap_snmp_alarm_unregister(unsigned alarm);
int __wrap_netsnmp_register_handler(netsnmp_handler_registration *registration);
netsnmp_handler_registration *__wrap_netsnmp_create_handler_registration(const char *name,
                                                                         Netsnmp_Node_Handler *handler,
                                                                         const oid *id, size_t id_length,
                                                                         int modes);
char *__wrap_strdup(const char *text);

unsigned __wrap_snmp_alarm_register_hr(timeval delay, unsigned flags, SNMPAlarmCallback *callback,
                                       void *argument) {
  constexpr long kMicrosecondsPerSecond = 1'000'000;
  if (refuses_alarms || flags != 0) {
    return 0;
  }
  latest_delay = delay.tv_sec * kMicrosecondsPerSecond + delay.tv_usec;
  set_alarms()[++latest_alarm] = {callback, argument};
  return latest_alarm;
}

void __wrap_snmp_alarm_unregister(unsigned alarm) { set_alarms().erase(alarm); }

// The agent frees what it refuses.
int __wrap_netsnmp_register_handler(netsnmp_handler_registration *registration) {
  if (registrations_until_refusal && (*registrations_until_refusal)-- == 0) {
    registrations_until_refusal.reset();
    netsnmp_handler_registration_free(registration);
    return MIB_REGISTRATION_FAILED;
  }
  return __real_netsnmp_register_handler(registration);
}

netsnmp_handler_registration *__wrap_netsnmp_create_handler_registration(const char *name,
                                                                         Netsnmp_Node_Handler *handler,
                                                                         const oid *id, size_t id_length,
                                                                         int modes) {
  if (std::exchange(fails_creation, false)) {
    return nullptr;
  }
  return __real_netsnmp_create_handler_registration(name, handler, id, id_length, modes);
}

char *__wrap_strdup(const char *text) {
  return std::exchange(fails_copy, false) ? nullptr : __real_strdup(text);
}
}
