// The switch's shared snapshot: what its interface, port-channel and VLAN managers and its STP library know.
//
// The switch keeps it in a memfd, sealed against shrinking, growing and other writers, that every connection
// receives. Two slots take turns: generation g stands in slot g % 2. The switch fills the other slot, then
// raises the generation, so that a reader never waits: what it read from a slot is whole when the generation
// has not changed meanwhile.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "platform/stp.h"
#include "wire/if_index.h"

namespace stpplatform::wire {

inline constexpr uint32_t kSnapshotMagic = 0x5354'5053;  // "STPS"
inline constexpr uint32_t kSnapshotVersion = 1;

// Bridge port numbers: 129 to 4095 for physical ports, 4097 to 8191 for port-channels.
inline constexpr uint32_t kPortNumbers = 8192;

// Every interface is a physical port or a port-channel, and has a bridge port number that its own number
// tells (if_index.h): no switch has more of them than there are such numbers.
inline constexpr uint32_t kMaxInterfaces = kMaxPhysicalPort + kMaxChannel;

// The CIST and 64 MST instances, as many as a configuration can name (IEEE 802.1Q clause 13.8).
inline constexpr uint32_t kMaxMstInstances = 65;

struct SnapshotInterface {
  uint32_t if_index;
  uint32_t pc_if_index;  // of the port-channel that the port is a member of, 0 for none
  uint16_t base_port;    // bridge port number
  uint16_t channel;      // number of that port-channel, 0 for none
  uint8_t oper_status;   // enum if_oper_status
  uint8_t switched;      // 1: takes part in bridging
  uint8_t reserved[2];
  uint8_t vlans[STP_VLAN_BITMAP_SIZE];  // the VLANs that the port is a member of
};

struct SnapshotMstInstance {
  uint16_t id;
  uint16_t reserved;
  uint8_t vlans[STP_VLAN_BITMAP_SIZE];  // the VLANs mapped to it
};

// Head of a slot; `interface_capacity` interfaces in ascending order of if_index follow it.
struct SnapshotSlot {
  uint32_t interface_count;
  uint32_t mst_instance_count;
  uint16_t
      interface_of_port[kPortNumbers];  // position + 1 of the interface with this bridge port number; 0: none
  SnapshotMstInstance mst_instances[kMaxMstInstances];
};

struct SnapshotHead {
  uint32_t magic;
  uint32_t version;
  uint32_t size;                // of the whole file
  uint32_t interface_capacity;  // of each slot
  std::atomic<uint64_t> generation;
};

static_assert(std::atomic<uint64_t>::is_always_lock_free, "the generation is shared between processes");
static_assert(sizeof(SnapshotInterface) == 16 + STP_VLAN_BITMAP_SIZE && sizeof(SnapshotMstInstance) == 516 &&
                  sizeof(SnapshotHead) == 24 && alignof(SnapshotSlot) == 4,
              "the snapshot has no padding");

constexpr size_t snapshot_slot_size(size_t interface_capacity) {
  return (sizeof(SnapshotSlot) + interface_capacity * sizeof(SnapshotInterface) + 7U) & ~size_t{7};
}

constexpr size_t snapshot_size(size_t interface_capacity) {
  return sizeof(SnapshotHead) + 2 * snapshot_slot_size(interface_capacity);
}

inline constexpr size_t kMaxSnapshotSize = snapshot_size(kMaxInterfaces);

constexpr size_t snapshot_slot_offset(size_t interface_capacity, uint64_t generation) {
  return sizeof(SnapshotHead) + static_cast<size_t>(generation % 2) * snapshot_slot_size(interface_capacity);
}

}  // namespace stpplatform::wire
