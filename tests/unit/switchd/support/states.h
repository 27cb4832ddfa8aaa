// States of switches that a test makes piece by piece, with the defaults of scenarios.
#pragma once

#include "keys/schema.h"
#include "model/switch_state.h"
#include "sources/scenario/loader.h"

// In mode mst, without interfaces and instances.
inline stpswitch::SwitchState empty_switch() {
  return stpswitch::parse_scenario("switch.mode = 'mst'", "test.toml");
}

// Those with a number, made when they are first asked for.
inline stpswitch::Port &port(stpswitch::SwitchState &state, uint32_t number) {
  return state.ports.try_emplace(number, stpswitch::kPortSection.make(number)).first->second;
}
inline stpswitch::PortChannel &channel(stpswitch::SwitchState &state, uint32_t number) {
  return state.port_channels.try_emplace(number, stpswitch::kPortChannelSection.make(number)).first->second;
}
