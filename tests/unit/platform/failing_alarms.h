// An agent that has no memory for an alarm.
#pragma once

// While one exists, the agent's alarms cannot be set. The program must be linked with
// --wrap=snmp_alarm_register_hr.
class FailingAlarms {
 public:
  FailingAlarms();
  ~FailingAlarms();
  FailingAlarms(const FailingAlarms &) = delete;
  FailingAlarms &operator=(const FailingAlarms &) = delete;
};
