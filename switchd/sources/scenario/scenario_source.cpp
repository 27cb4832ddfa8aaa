#include "sources/scenario/scenario_source.h"

#include "sources/scenario/consistency.h"
#include "sources/scenario/loader.h"

namespace stpswitch {

ScenarioSource::ScenarioSource(const std::string &path) : scenario_(load_scenario(path)) {}

// Nothing happens in a scenario but what somebody sets.
SwitchState ScenarioSource::start(Listener /*listener*/) { return scenario_; }

SwitchState ScenarioSource::with_value(const SwitchState &now, const std::string &key,
                                       const std::string &value) const {
  return stpswitch::with_value(now, key, value);
}

}  // namespace stpswitch
