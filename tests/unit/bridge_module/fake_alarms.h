// The agent's alarms, and its refusals. The program must be linked with --wrap=snmp_alarm_register_hr,
// --wrap=snmp_alarm_unregister and --wrap=netsnmp_register_handler.
#pragma once

#include <cstddef>

namespace fake_agent {

// Forgets the alarms, and refuses nothing.
void reset();

// Alarms that are set; and fires the one that there is. False when there is none.
size_t alarms();
bool fire_alarm();

// Fires until none is set any more. Returns how often it did, at most `limit` times.
size_t fire_alarms(size_t limit);

// The time after which the latest alarm was to fire.
long latest_delay_us();

// While true, no alarm can be set.
void set_refuses_alarms(bool refuses);

// Refuses the registration that comes after `count` others.
void refuse_registration_after(size_t count);

}  // namespace fake_agent
