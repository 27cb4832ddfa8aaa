// A scenario file: it is refused in one line, or becomes a switch that can be published.
#include <string>

#include "model/switch.h"
#include "sources/scenario/loader.h"
#include "support/input.h"
#include "support/publication.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  try {
    stpswitch::Switch read(stpswitch::parse_scenario(std::string(fuzz::text_of({data, size})), "fuzz.toml"));
    fuzz::require_image(read);
    fuzz::require_overview(&read);
  } catch (const stpswitch::ScenarioError &error) {
    fuzz::require_printable(error.what());
  }
  return 0;
}
