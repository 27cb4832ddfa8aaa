// Lines on the control socket, of one client after the other: each is answered by one line of JSON, and the
// switch stays one that can be published.
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>

#include "control/responder.h"
#include "faults/faults.h"
#include "sources/scenario/consistency.h"
#include "support/input.h"
#include "support/publication.h"
#include "support/require.h"
#include "support/switches.h"

using nlohmann::json;

namespace {

// As a scenario is: everything can be set.
class SettableSource : public stpswitch::Source {
 public:
  explicit SettableSource(stpswitch::SwitchState original) : original_(std::move(original)) {}

  stpswitch::SwitchState start(Listener /*listener*/) override { return original_; }
  stpswitch::SwitchState with_value(const stpswitch::SwitchState &now, const std::string &key,
                                    const std::string &value) const override {
    return stpswitch::with_value(now, key, value);
  }
  std::optional<stpswitch::SwitchState> original() const override { return original_; }

 private:
  stpswitch::SwitchState original_;
};

void check_answer(const std::string &answer) {
  fuzz::require(answer.find('\n') == std::string::npos, "an answer is one line");
  const json parsed = json::parse(answer, nullptr, false);
  fuzz::require(parsed.is_object() && parsed.contains("ok") && parsed["ok"].is_boolean(),
                "an answer says whether it is done");
  fuzz::require(parsed["ok"] || (parsed.contains("error") && parsed["error"].is_string()),
                "an answer says what is wrong");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  SettableSource source(fuzz::any_switch(input.number<uint8_t>()).state());
  stpswitch::Switch the_switch(source.start({}));
  stpswitch::Faults faults;
  stpswitch::ControlResponder responder(&source, &the_switch, &faults);
  std::istringstream lines{std::string(fuzz::text_of(input.rest()))};
  for (std::string line; std::getline(lines, line);) {
    check_answer(responder.answer(line));
  }
  fuzz::require_image(the_switch);
  return 0;
}
