#include "failing_alarms.h"

#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>
//
#include <net-snmp/library/snmp_alarm.h>

namespace {

bool failing = false;

}  // namespace

extern "C" {

unsigned int __real_snmp_alarm_register_hr(timeval when, unsigned int flags, SNMPAlarmCallback *callback,
                                           void *argument);

unsigned int __wrap_snmp_alarm_register_hr(timeval when, unsigned int flags, SNMPAlarmCallback *callback,
                                           void *argument) {
  return failing ? 0 : __real_snmp_alarm_register_hr(when, flags, callback, argument);
}
}

FailingAlarms::FailingAlarms() { failing = true; }

FailingAlarms::~FailingAlarms() { failing = false; }
