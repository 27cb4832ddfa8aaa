// A scenario file: it is refused in one line, or becomes a switch that can be published.
#include <algorithm>
#include <string>
#include <vector>

#include "answers/image.h"
#include "model/switch.h"
#include "publisher/image_slot.h"
#include "sources/scenario/loader.h"
#include "support/input.h"
#include "support/require.h"

namespace wire = stpplatform::wire;

namespace {

bool is_control(char character) {
  constexpr char kDelete = 0x7F;
  return (character >= 0 && character < ' ') || character == kDelete;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  try {
    const stpswitch::Switch read(
        stpswitch::parse_scenario(std::string(fuzz::text_of({data, size})), "fuzz.toml"));
    std::vector<uint8_t> slot;
    stpswitch::lay_out_slot(read, &slot);
    const stpplatform::answers::Image image(reinterpret_cast<const wire::ImageSlot *>(slot.data()),
                                            slot.size());
    fuzz::require(image.is_sound(), "an image can be made of what was read");
  } catch (const stpswitch::ScenarioError &error) {
    const std::string reason = error.what();
    fuzz::require(std::none_of(reason.begin(), reason.end(), is_control), "an error is one line of text");
  }
  return 0;
}
