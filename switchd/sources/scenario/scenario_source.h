// A switch as a scenario file describes it: everything in it can be set.
#pragma once

#include <string>

#include "sources/source.h"

namespace stpswitch {

class ScenarioSource : public Source {
 public:
  // Throws ScenarioError.
  explicit ScenarioSource(const std::string &path);

  SwitchState start(Listener listener) override;
  SwitchState with_value(const SwitchState &now, const std::string &key,
                         const std::string &value) const override;
  std::optional<SwitchState> original() const override { return scenario_; }

 private:
  const SwitchState scenario_;
};

}  // namespace stpswitch
