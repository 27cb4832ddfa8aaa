// The agent's alarms, and its refusals. The program must be linked with --wrap for each function that is
// replaced.
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

// No memory for the next registration, or for its copy of the context's name.
void fail_next_creation();
void fail_next_copy();

}  // namespace fake_agent
