// Carries out the requests of the control socket.
#pragma once

#include <string>
#include <string_view>

#include "faults/faults.h"
#include "model/switch.h"
#include "sources/source.h"

namespace stpswitch {

class ControlResponder {
 public:
  // All must outlive the responder. The switch is as its source says.
  ControlResponder(const Source *source, Switch *the_switch, Faults *faults)
      : source_(*source), switch_(*the_switch), faults_(*faults) {}

  // The answer to one request, each without the end of its line. Never throws for what a request says.
  std::string answer(std::string_view request);

 private:
  const Source &source_;
  Switch &switch_;
  Faults &faults_;
};

// The answer that tells of an error.
std::string error_answer(const std::string &reason);

}  // namespace stpswitch
