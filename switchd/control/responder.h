// Carries out the requests of the control socket.
#pragma once

#include <string>
#include <string_view>

#include "faults/faults.h"
#include "model/switch.h"

namespace stpswitch {

class ControlResponder {
 public:
  // Both must outlive the responder. The switch is as its scenario says: a reset leads back to that.
  ControlResponder(Switch *the_switch, Faults *faults)
      : scenario_(the_switch->state()), switch_(*the_switch), faults_(*faults) {}

  // The answer to one request, each without the end of its line. Never throws for what a request says.
  std::string answer(std::string_view request);

 private:
  const SwitchState scenario_;
  Switch &switch_;
  Faults &faults_;
};

// The answer that tells of an error.
std::string error_answer(const std::string &reason);

}  // namespace stpswitch
