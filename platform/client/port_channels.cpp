// pcm.h: the port-channel manager, from the switch's image.
#include "channel.h"
#include "export.h"
#include "platform/pcm.h"

namespace answers = stpplatform::answers;
namespace wire = stpplatform::wire;

extern "C" STPPLATFORM_EXPORT int pcm_get_pc_for_port(uint32_t if_index, pcm_port_channel *record) {
  if (record == nullptr) {
    return CMD_INVALID_ARGUMENT;
  }
  pcm_port_channel found{};
  const cmd_result result = stpplatform::ask_interface(
      if_index, stpplatform::Vouching::kJustNow, [&](const wire::ImageInterface &interface) {
        found = {answers::load_shared(interface.channel), if_index,
                 answers::load_shared(interface.pc_if_index)};
      });
  if (result == CMD_OK) {
    *record = found;
  }
  return result;
}
