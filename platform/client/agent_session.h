// Who asks: the SNMP context, user and session of the request that the agent is serving (agent_ext.h), read
// from the agent's own request when it checks the access to a variable.
#pragma once

namespace stpplatform {

// Begins and ends to listen to the agent's access checks.
void watch_requests();
void stop_watching_requests();

// Has `begun` called for every request that is checked, and `ended` when nobody asks any more; there is one
// listener.
void on_request(void (*begun)(), void (*ended)());

// Nobody asks any more.
void end_of_request();

}  // namespace stpplatform
