#include "support/switches.h"

#include "sources/scenario/loader.h"

namespace fuzz {

const stpswitch::Switch &any_switch(uint8_t choice) {
  static const stpswitch::Switch rapid_pvst(stpswitch::load_scenario(SCENARIOS "/rapid-pvst-small.toml"));
  static const stpswitch::Switch mst(stpswitch::load_scenario(SCENARIOS "/mst-small.toml"));
  return choice % 2 == 0 ? rapid_pvst : mst;
}

}  // namespace fuzz
