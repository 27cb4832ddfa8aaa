#include "support/publication.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "answers/image.h"
#include "base/printable.h"
#include "control/responder.h"
#include "publisher/image_slot.h"
#include "support/require.h"

namespace wire = stpplatform::wire;
using nlohmann::json;

namespace fuzz {
namespace {

// One in which nothing can be set.
class ReadSource : public stpswitch::Source {
 public:
  stpswitch::SwitchState start(Listener /*listener*/) override { return {}; }
  stpswitch::SwitchState with_value(const stpswitch::SwitchState &now, const std::string & /*key*/,
                                    const std::string & /*value*/) const override {
    return now;
  }
  std::optional<stpswitch::SwitchState> original() const override { return std::nullopt; }
};

}  // namespace

void require_image(const stpswitch::Switch &the_switch) {
  std::vector<uint8_t> slot;
  stpswitch::lay_out_slot(the_switch, &slot);
  const stpplatform::answers::Image image(reinterpret_cast<const wire::ImageSlot *>(slot.data()),
                                          slot.size());
  require(image.is_sound(), "an image can be made of every state");
}

void require_overview(stpswitch::Switch *the_switch) {
  const ReadSource source;
  stpswitch::Faults faults;
  stpswitch::ControlResponder responder(&source, the_switch, &faults);
  for (const char *const request : {R"({"op":"show"})", R"({"op":"overview"})"}) {
    const std::string answer = responder.answer(request);
    require(json::accept(answer) && answer.find(R"("ok":true)") != std::string::npos,
            "the control socket tells every state");
  }
}

void require_printable(const std::string &text) {
  require(stpswitch::is_printable(text), "a text stays in its line");
}

}  // namespace fuzz
