// pcm.h: the port-channel manager, from the switch's snapshot.
#include "ask_snapshot.h"
#include "export.h"
#include "platform/pcm.h"

extern "C" STPPLATFORM_EXPORT int pcm_get_pc_for_port(uint32_t if_index, pcm_port_channel *record) {
  if (record == nullptr) {
    return CMD_INVALID_ARGUMENT;
  }
  pcm_port_channel found{};
  const cmd_result result =
      stpplatform::ask_interface(if_index, [&](const stpplatform::wire::SnapshotInterface &interface) {
        found = {stpplatform::load_shared(interface.channel), if_index,
                 stpplatform::load_shared(interface.pc_if_index)};
      });
  if (result == CMD_OK) {
    *record = found;
  }
  return result;
}
