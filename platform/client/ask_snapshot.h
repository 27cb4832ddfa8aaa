// How the functions of the switch's managers look something up in its snapshot.
#pragma once

#include "connection.h"
#include "platform/cmd.h"
#include "snapshot_reader.h"

namespace stpplatform {

// SnapshotReader::read on the switch's snapshot; CMD_UNREACHABLE when there is none.
template <typename Look>
cmd_result ask_snapshot(Look look) {
  const SnapshotReader *snapshot = connection().snapshot();
  return snapshot == nullptr ? CMD_UNREACHABLE : snapshot->read(look);
}

// The same for one interface. `look` takes a `const wire::SnapshotInterface &` and returns nothing.
// CMD_NO_ENTRY when there is no such interface.
template <typename Look>
cmd_result ask_interface(uint32_t if_index, Look look) {
  return ask_snapshot([&](const SlotView &slot) {
    const wire::SnapshotInterface *interface = slot.find_interface(if_index);
    if (interface == nullptr) {
      return CMD_NO_ENTRY;
    }
    look(*interface);
    return CMD_OK;
  });
}

// True for what has a bridge port number of its own; members of a port-channel have none that counts.
inline bool is_bridge_port(const wire::SnapshotInterface &interface) {
  return load_shared(interface.switched) != 0 && load_shared(interface.base_port) != 0 &&
         load_shared(interface.pc_if_index) == 0;
}

}  // namespace stpplatform
